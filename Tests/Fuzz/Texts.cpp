// Small texts: UTF-8, base64, hashes that are wished for, moments. What is read is written as what was read.

#include "Attempts/Headers.h"
#include "Attempts/Utf8Text.h"
#include "Files/FileHash.h"
#include "Fuzz.h"
#include "Misc/Base64.h"
#include "Misc/DateTime.h"

FUZZ(Input)
{
	const std::string_view Bytes = Input.Rest();
	const TArray<uint8> Array = ToArray(Bytes);
	const FString Text = text(Bytes);

	const FString Decoded = CorvaneUtf8::Decode(Array.GetData(), Array.Num());
	HOST_CHECK(utf8(Decoded) == Bytes || Decoded.Contains(TEXT("\uFFFD")));
	HOST_CHECK(IsSame(text(utf8(Decoded)), Decoded) && IsSame(text(utf8(Text)), Text));
	HOST_CHECK(utf8(Text) != Bytes || IsSame(Decoded, Text)); // where nothing is exchanged, both decoders agree

	TArray<uint8> Read;
	HOST_CHECK(FBase64::Decode(FBase64::Encode(Array), Read) && Read == Array);
	HOST_CHECK(!FBase64::Decode(Text, Read) || Read.Num() <= Text.Len());

	FCorvaneHashWish Wish;
	if (FCorvaneHashWish::Parse(Text, Wish) && !Text.IsEmpty())
	{
		const FString Name = Wish.Kind == ECorvaneHashKind::Md5    ? TEXT("md5")
							 : Wish.Kind == ECorvaneHashKind::Sha1 ? TEXT("sha1")
																   : TEXT("sha256");
		HOST_CHECK((Wish.Expected.IsEmpty() ? Name : Name + TEXT(":") + Wish.Expected).Equals(Text, ESearchCase::IgnoreCase));
	}

	FDateTime Moment;
	HOST_CHECK(!FDateTime::ParseIso8601(*Text, Moment) || IsSame(Moment.ToIso8601(), FString(*Text)));
	HOST_CHECK(!CorvaneHeaders::IsName(Text) || (!CorvaneHeaders::HasControl(Text) && !Text.Contains(TEXT(":"))));
}
