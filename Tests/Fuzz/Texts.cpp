// Small texts: UTF-8, lines, base64, hashes that are wished for, moments. What is read is written as what was read.

#include "Attempts/Headers.h"
#include "Attempts/Utf8Text.h"
#include "Files/FileHash.h"
#include "Fuzz.h"
#include "Misc/Base64.h"
#include "Misc/DateTime.h"
#include "Runs/Result.h"

namespace
{
	/** What stands between each two CR LF, unless it is nothing. */
	TArray<FString> CutLines(std::string_view Bytes)
	{
		TArray<FString> Lines;
		for (size_t End = 0; End != Bytes.npos; Bytes.remove_prefix(End == Bytes.npos ? 0 : End + 2))
		{
			End = Bytes.find("\r\n");
			const std::string_view Line = Bytes.substr(0, End);
			Line.empty() ? void() : void(Lines.Add(text(Line)));
		}
		return Lines;
	}
} // namespace

FUZZ(Input)
{
	const std::string_view Bytes = Input.Rest();
	const TArray<uint8> Array = ToArray(Bytes);
	const FString Text = text(Bytes);

	const FString Decoded = CorvaneUtf8::Decode(Array.GetData(), Array.Num());
	HOST_CHECK(utf8(Decoded) == Bytes || Decoded.Contains(TEXT("\uFFFD")));
	HOST_CHECK(IsSame(text(utf8(Decoded)), Decoded) && IsSame(text(utf8(Text)), Text));
	HOST_CHECK(utf8(Text) != Bytes || IsSame(Decoded, Text)); // where nothing is exchanged, both decoders agree

	const FString Told = CorvaneResult::toText(Array);
	HOST_CHECK(IsSame(Told, Text));
	HOST_CHECK(CorvaneResult::toLines(Told) == CutLines(utf8(Told)));

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
