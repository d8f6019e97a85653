#include "Tus/TusRequests.h"

#include "Attempts/Address.h"
#include "Containers/StringConv.h"
#include "Files/JournalLines.h"
#include "Misc/Base64.h"
#include "Tus/TusAnswer.h"

namespace CorvaneTusRequests
{
	static const TCHAR* const BytesType = TEXT("application/offset+octet-stream");

	static FString Encode(const FString& Text)
	{
		const FTCHARToUTF8 Utf8(*Text, Text.Len());
		return FBase64::Encode(reinterpret_cast<const uint8*>(Utf8.Get()), static_cast<uint32>(Utf8.Length()));
	}

	static uint8 DigitOf(TCHAR Character)
	{
		return static_cast<uint8>(Character <= TEXT('9') ? Character - TEXT('0') : Character - TEXT('a') + 10);
	}

	static TArray<uint8> BytesOf(const FString& Hex)
	{
		TArray<uint8> Bytes;
		for (int32 Index = 0; Index + 1 < Hex.Len(); Index += 2)
		{
			Bytes.Add(static_cast<uint8>(DigitOf(Hex[Index]) * 16 + DigitOf(Hex[Index + 1])));
		}
		return Bytes;
	}

	static const TCHAR* NameOf(ECorvaneHashKind Kind)
	{
		switch (Kind)
		{
		case ECorvaneHashKind::Md5:
			return TEXT("md5");
		case ECorvaneHashKind::Sha1:
			return TEXT("sha1");
		default:
			return TEXT("sha256");
		}
	}
} // namespace CorvaneTusRequests

FCorvaneExchangeRequest FCorvaneTusRequests::Make(const TCHAR* Verb, const FString& Address) const
{
	FCorvaneExchangeRequest Asked;
	Asked.Verb = Verb;
	Asked.URL = CorvaneAddress::WithUserOf(Address, URL);
	if (CorvaneAddress::IsSameOrigin(Address, URL))
	{
		Asked.Headers = Options.Headers;
	}
	Asked.Headers.Add(TEXT("Tus-Resumable"), TEXT("1.0.0"));
	Asked.HeadersToKeep = FCorvaneTusHeaders::Names();
	Asked.SilenceSeconds = static_cast<float>(Options.SilenceSeconds);
	return Asked;
}

FCorvaneExchangeRequest FCorvaneTusRequests::Create(const FCorvaneTusFileFacts& File, int64 Bytes) const
{
	FCorvaneExchangeRequest Asked = Make(TEXT("POST"), URL);
	Asked.Headers.Add(TEXT("Upload-Length"), CorvaneJournalLines::ToText(File.Size));
	Asked.Headers.Add(TEXT("Upload-Metadata"), Metadata(File));
	if (Bytes > 0) // without a body the type would promise one
	{
		Asked.Headers.Add(TEXT("Content-Type"), CorvaneTusRequests::BytesType);
	}
	return Asked;
}

FCorvaneExchangeRequest FCorvaneTusRequests::Send(const FString& Upload, int64 Start) const
{
	FCorvaneExchangeRequest Asked = Make(TEXT("PATCH"), Upload);
	Asked.Headers.Add(TEXT("Upload-Offset"), CorvaneJournalLines::ToText(Start));
	Asked.Headers.Add(TEXT("Content-Type"), CorvaneTusRequests::BytesType);
	return Asked;
}

void FCorvaneTusRequests::AddChecksum(FCorvaneExchangeRequest& Asked, ECorvaneHashKind Kind, const FString& Hex)
{
	using namespace CorvaneTusRequests;
	Asked.Headers.Add(TEXT("Upload-Checksum"), FString(NameOf(Kind)) + TEXT(" ") + FBase64::Encode(BytesOf(Hex)));
}

FString FCorvaneTusRequests::Metadata(const FCorvaneTusFileFacts& File) const
{
	TMap<FString, FString> Entries;
	Entries.Add(TEXT("filename"), File.Name);
	Entries.Add(TEXT("filetype"), File.Type);
	for (const TPair<FString, FString>& Entry : Options.Metadata)
	{
		Entries.Add(Entry.Key, Entry.Value);
	}
	FString Text;
	for (const TPair<FString, FString>& Entry : Entries)
	{
		const FString Value = Entry.Value.IsEmpty() ? FString() : TEXT(" ") + CorvaneTusRequests::Encode(Entry.Value);
		Text += (Text.IsEmpty() ? TEXT("") : TEXT(",")) + Entry.Key + Value;
	}
	return Text;
}
