#include "Files/Journal.h"

#include "Containers/StringConv.h"
#include "Files/FileHash.h"
#include "Misc/CString.h"

namespace CorvaneJournal
{
	static const TCHAR* const Version = TEXT("1");
	static const TCHAR* const Separator = TEXT("\t");
	static const TCHAR* const Differs = TEXT("differs");

	enum class ELine : uint8
	{
		Good,
		Damaged,
		Foreign // in order, but written by something that knows other records
	};

	static FString Checksum(const uint8* Bytes, int32 Count)
	{
		return CorvaneSha256Of(Bytes, Count).Left(16); // it finds damage, it need not withstand malice
	}

	/** No address and no header line has control characters by right; with another in its place the text equals no true one. */
	static FString Field(const FString& Text)
	{
		FString Result = Separator;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			Result.AppendChar(Text[Index] < 0x20 ? TCHAR(0xFFFD) : Text[Index]);
		}
		return Result;
	}

	static FString Field(int64 Number)
	{
		return FString::Printf(TEXT("%s%lld"), Separator, Number);
	}

	static TArray<uint8> Line(const FString& Record)
	{
		const FTCHARToUTF8 Text(*Record, Record.Len());
		TArray<uint8> Bytes;
		Bytes.Append(reinterpret_cast<const uint8*>(Text.Get()), Text.Length());
		const FString End = Separator + Checksum(Bytes.GetData(), Bytes.Num()) + TEXT("\n");
		const FTCHARToUTF8 EndText(*End, End.Len());
		Bytes.Append(reinterpret_cast<const uint8*>(EndText.Get()), EndText.Length());
		return Bytes;
	}

	static bool ParseNumber(const FString& Text, int64 Least, int64& Number)
	{
		Number = FCString::Atoi64(*Text);
		return Number >= Least && FString::Printf(TEXT("%lld"), Number).Equals(Text, ESearchCase::CaseSensitive);
	}

	static bool TakeSource(const TArray<FString>& Fields, FCorvaneJournal& Journal)
	{
		FCorvaneJournal Begun;
		Begun.bHasSource = true;
		if (Fields.Num() != 7 || !Fields[1].Equals(Version, ESearchCase::CaseSensitive) || !ParseNumber(Fields[5], -1, Begun.Source.Total))
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
		if (!Journal.bHasSource || Fields.Num() != 4 + NumMore || !ParseNumber(Fields[1], 0, Journal.Kept.Length))
		{
			return false;
		}
		Journal.Kept.TailHash = Fields[2];
		Journal.bWhole = NumMore > 0;
		Journal.bToldApart = Journal.bWhole && Fields[3].Equals(Differs, ESearchCase::CaseSensitive);
		return true;
	}

	static ELine TakeLine(const uint8* Bytes, int32 Count, FCorvaneJournal& Journal)
	{
		const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes), Count);
		TArray<FString> Fields;
		FString::ConstructFromPtrSize(Units.Get(), Units.Length()).ParseIntoArray(Fields, Separator, false);
		const FString Sum = Fields.IsEmpty() ? FString() : Fields[Fields.Num() - 1];
		if (Sum.Len() >= Count || !Checksum(Bytes, Count - Sum.Len() - 1).Equals(Sum, ESearchCase::CaseSensitive))
		{
			return ELine::Damaged;
		}
		const FString& Kind = Fields[0];
		const bool bTaken = Kind.Equals(TEXT("source"), ESearchCase::CaseSensitive)  ? TakeSource(Fields, Journal)
							: Kind.Equals(TEXT("kept"), ESearchCase::CaseSensitive)  ? TakeStart(Fields, 0, Journal)
							: Kind.Equals(TEXT("whole"), ESearchCase::CaseSensitive) ? TakeStart(Fields, 1, Journal)
																					 : false;
		return bTaken ? ELine::Good : ELine::Foreign;
	}

	/** @return where the line that begins at a place ends, or INDEX_NONE. */
	static int32 FindLineEnd(const TArray<uint8>& Bytes, int32 Start)
	{
		for (int32 At = Start; At < Bytes.Num(); ++At)
		{
			if (Bytes[At] == '\n')
			{
				return At;
			}
		}
		return INDEX_NONE;
	}
} // namespace CorvaneJournal

FCorvaneJournal FCorvaneJournal::Read(const TArray<uint8>& Bytes)
{
	using namespace CorvaneJournal;
	FCorvaneJournal Journal;
	int32 Start = 0;
	for (int32 End = FindLineEnd(Bytes, 0); End != INDEX_NONE; End = FindLineEnd(Bytes, Start))
	{
		const ELine Line = TakeLine(Bytes.GetData() + Start, End - Start, Journal);
		const bool bIsLast = FindLineEnd(Bytes, End + 1) == INDEX_NONE;
		if (Line == ELine::Foreign || (Line == ELine::Damaged && !bIsLast))
		{
			return FCorvaneJournal();
		}
		if (Line == ELine::Damaged)
		{
			break;
		}
		Start = End + 1;
		Journal.ValidBytes = Start;
	}
	return Journal;
}

TArray<uint8> FCorvaneJournal::SourceLine(const FCorvaneSourceFacts& InSource)
{
	using namespace CorvaneJournal;
	return Line(FString(TEXT("source")) + Field(Version) + Field(InSource.Address) + Field(InSource.ETag) + Field(InSource.LastModified) +
				Field(InSource.Total));
}

TArray<uint8> FCorvaneJournal::KeptLine(const FCorvaneFileStart& InKept)
{
	using namespace CorvaneJournal;
	return Line(FString(TEXT("kept")) + Field(InKept.Length) + Field(InKept.TailHash));
}

TArray<uint8> FCorvaneJournal::WholeLine(const FCorvaneFileStart& Whole, bool bInToldApart)
{
	using namespace CorvaneJournal;
	return Line(FString(TEXT("whole")) + Field(Whole.Length) + Field(Whole.TailHash) + Field(bInToldApart ? Differs : TEXT("alike")));
}
