#include "Files/Journal.h"

#include "Files/JournalLines.h"

namespace CorvaneJournal
{
	static const TCHAR* const Version = TEXT("1");
	static const TCHAR* const Differs = TEXT("differs");

	static bool TakeSource(const TArray<FString>& Fields, FCorvaneJournal& Journal)
	{
		FCorvaneJournal Begun;
		Begun.bHasSource = true;
		if (Fields.Num() != 6 || !Fields[1].Equals(Version, ESearchCase::CaseSensitive) ||
			!CorvaneJournalLines::ParseNumber(Fields[5], -1, Begun.Source.Total))
		{
			return false;
		}
		Begun.Source.Address = Fields[2];
		Begun.Source.ETag = Fields[3];
		Begun.Source.LastModified = Fields[4];
		Journal = Begun;
		return true;
	}

	/** @param NumMore  fields behind those of every such record. */
	static bool TakeStart(const TArray<FString>& Fields, int32 NumMore, FCorvaneJournal& Journal)
	{
		if (!Journal.bHasSource || Fields.Num() != 3 + NumMore || !CorvaneJournalLines::ParseNumber(Fields[1], 0, Journal.Kept.Length))
		{
			return false;
		}
		Journal.Kept.TailHash = Fields[2];
		Journal.bWhole = NumMore > 0;
		Journal.bToldApart = Journal.bWhole && Fields[3].Equals(Differs, ESearchCase::CaseSensitive);
		return true;
	}

	static bool TakeRecord(const TArray<FString>& Fields, FCorvaneJournal& Journal)
	{
		const FString& Kind = Fields[0];
		return Kind.Equals(TEXT("source"), ESearchCase::CaseSensitive)  ? TakeSource(Fields, Journal)
			   : Kind.Equals(TEXT("kept"), ESearchCase::CaseSensitive)  ? TakeStart(Fields, 0, Journal)
			   : Kind.Equals(TEXT("whole"), ESearchCase::CaseSensitive) ? TakeStart(Fields, 1, Journal)
																		: false;
	}
} // namespace CorvaneJournal

FCorvaneJournal FCorvaneJournal::Read(const TArray<uint8>& Bytes)
{
	FCorvaneJournal Journal;
	const int64 GoodBytes =
		CorvaneJournalLines::Read(Bytes, [&Journal](const TArray<FString>& Fields) { return CorvaneJournal::TakeRecord(Fields, Journal); });
	if (GoodBytes < 0)
	{
		return FCorvaneJournal();
	}
	Journal.ValidBytes = GoodBytes;
	return Journal;
}

TArray<uint8> FCorvaneJournal::SourceLine(const FCorvaneSourceFacts& InSource)
{
	return CorvaneJournalLines::Make({TEXT("source"), CorvaneJournal::Version, InSource.Address, InSource.ETag, InSource.LastModified,
		CorvaneJournalLines::ToText(InSource.Total)});
}

TArray<uint8> FCorvaneJournal::KeptLine(const FCorvaneFileStart& InKept)
{
	return CorvaneJournalLines::Make({TEXT("kept"), CorvaneJournalLines::ToText(InKept.Length), InKept.TailHash});
}

TArray<uint8> FCorvaneJournal::WholeLine(const FCorvaneFileStart& Whole, bool bInToldApart)
{
	return CorvaneJournalLines::Make(
		{TEXT("whole"), CorvaneJournalLines::ToText(Whole.Length), Whole.TailHash, bInToldApart ? CorvaneJournal::Differs : TEXT("alike")});
}
