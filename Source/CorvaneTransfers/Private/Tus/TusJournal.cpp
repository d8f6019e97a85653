#include "Tus/TusJournal.h"

#include "Attempts/Address.h"
#include "Containers/StringConv.h"
#include "Files/FileHash.h"
#include "Files/JournalLines.h"

namespace CorvaneTusJournal
{
	static const TCHAR* const Version = TEXT("1");

	static bool ParseTime(const FString& Text, FDateTime& Time)
	{
		int64 Ticks = 0;
		const bool bRead = CorvaneJournalLines::ParseNumber(Text, 0, Ticks);
		Time = FDateTime(Ticks);
		return bRead;
	}

	static FString ToText(const FDateTime& Time)
	{
		return CorvaneJournalLines::ToText(Time.GetTicks());
	}

	static bool TakeUpload(const TArray<FString>& Fields, FCorvaneTusJournal& Journal)
	{
		FCorvaneTusJournal Begun;
		if (Fields.Num() != 7 || !Fields[1].Equals(Version, ESearchCase::CaseSensitive) ||
			!CorvaneJournalLines::ParseNumber(Fields[4], 0, Begun.File.Size) || !ParseTime(Fields[5], Begun.File.ChangedAt))
		{
			return false;
		}
		Begun.Endpoint = Fields[2];
		Begun.File.Path = Fields[3];
		Begun.Upload.Address = Fields[6];
		Journal = Begun;
		return true;
	}

	static bool TakeKept(const TArray<FString>& Fields, FCorvaneTusJournal& Journal)
	{
		if (Journal.Upload.Address.IsEmpty() || Fields.Num() != 4 || !CorvaneJournalLines::ParseNumber(Fields[1], 0, Journal.Kept.Length) ||
			!ParseTime(Fields[3], Journal.Upload.Expires))
		{
			return false;
		}
		Journal.Kept.TailHash = Fields[2];
		return true;
	}

	static bool TakeRecord(const TArray<FString>& Fields, FCorvaneTusJournal& Journal)
	{
		const FString& Kind = Fields[0];
		return Kind.Equals(TEXT("upload"), ESearchCase::CaseSensitive) ? TakeUpload(Fields, Journal)
			   : Kind.Equals(TEXT("kept"), ESearchCase::CaseSensitive) ? TakeKept(Fields, Journal)
																	   : false;
	}
} // namespace CorvaneTusJournal

FCorvaneTusJournal FCorvaneTusJournal::Read(const TArray<uint8>& Bytes)
{
	FCorvaneTusJournal Journal;
	const int64 GoodBytes = CorvaneJournalLines::Read(
		Bytes, [&Journal](const TArray<FString>& Fields) { return CorvaneTusJournal::TakeRecord(Fields, Journal); });
	if (GoodBytes < 0)
	{
		return FCorvaneTusJournal();
	}
	Journal.ValidBytes = GoodBytes;
	return Journal;
}

FString FCorvaneTusJournal::EndpointOf(const FString& Address)
{
	return CorvaneAddress::ForLog(Address);
}

FString FCorvaneTusJournal::FileName(const FString& Address, const FString& Path)
{
	const FString Key = CorvaneAddress::WithoutUser(Address) + TEXT("\n") + Path;
	const FTCHARToUTF8 Utf8(*Key, Key.Len());
	return CorvaneSha256Of(reinterpret_cast<const uint8*>(Utf8.Get()), Utf8.Length()).Left(32) + TEXT(".corvjournal");
}

TArray<uint8> FCorvaneTusJournal::UploadLine(const FString& InEndpoint, const FCorvaneSentFile& InFile, const FCorvaneTusUpload& InUpload)
{
	return CorvaneJournalLines::Make({TEXT("upload"), CorvaneTusJournal::Version, InEndpoint, InFile.Path,
		CorvaneJournalLines::ToText(InFile.Size), CorvaneTusJournal::ToText(InFile.ChangedAt), InUpload.Address});
}

TArray<uint8> FCorvaneTusJournal::KeptLine(const FCorvaneFileStart& InKept, const FCorvaneTusUpload& InUpload)
{
	return CorvaneJournalLines::Make(
		{TEXT("kept"), CorvaneJournalLines::ToText(InKept.Length), InKept.TailHash, CorvaneTusJournal::ToText(InUpload.Expires)});
}
