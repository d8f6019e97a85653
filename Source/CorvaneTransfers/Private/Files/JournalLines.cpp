#include "Files/JournalLines.h"

#include "Containers/StringConv.h"
#include "Files/FileHash.h"
#include "Misc/CString.h"

namespace CorvaneJournalLines
{
	static const TCHAR* const Separator = TEXT("\t");

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

	static FString WithoutControls(const FString& Text)
	{
		FString Result;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			Result.AppendChar(Text[Index] < 0x20 ? TCHAR(0xFFFD) : Text[Index]);
		}
		return Result;
	}

	static void AppendUtf8(const FString& Text, TArray<uint8>& Bytes)
	{
		const FTCHARToUTF8 Units(*Text, Text.Len());
		Bytes.Append(reinterpret_cast<const uint8*>(Units.Get()), Units.Length());
	}

	static ELine TakeLine(const uint8* Bytes, int32 Count, const TFunction<bool(const TArray<FString>&)>& Take)
	{
		const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes), Count);
		TArray<FString> Fields;
		FString::ConstructFromPtrSize(Units.Get(), Units.Length()).ParseIntoArray(Fields, Separator, false);
		const FString Sum = Fields.IsEmpty() ? FString() : Fields.Last();
		if (Sum.Len() >= Count || !Checksum(Bytes, Count - Sum.Len() - 1).Equals(Sum, ESearchCase::CaseSensitive))
		{
			return ELine::Damaged;
		}
		Fields.RemoveAt(Fields.Num() - 1);
		return Take(Fields) ? ELine::Good : ELine::Foreign;
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
} // namespace CorvaneJournalLines

TArray<uint8> CorvaneJournalLines::Make(const TArray<FString>& Fields)
{
	FString Record;
	for (int32 Index = 0; Index < Fields.Num(); ++Index)
	{
		Record += (Index == 0 ? TEXT("") : Separator) + WithoutControls(Fields[Index]);
	}
	TArray<uint8> Bytes;
	AppendUtf8(Record, Bytes);
	AppendUtf8(Separator + Checksum(Bytes.GetData(), Bytes.Num()) + TEXT("\n"), Bytes);
	return Bytes;
}

int64 CorvaneJournalLines::Read(const TArray<uint8>& Bytes, const TFunction<bool(const TArray<FString>&)>& Take)
{
	int32 Start = 0;
	for (int32 End = FindLineEnd(Bytes, 0); End != INDEX_NONE; End = FindLineEnd(Bytes, Start))
	{
		const ELine Line = TakeLine(Bytes.GetData() + Start, End - Start, Take);
		const bool bIsLast = FindLineEnd(Bytes, End + 1) == INDEX_NONE;
		if (Line == ELine::Foreign || (Line == ELine::Damaged && !bIsLast))
		{
			return -1;
		}
		if (Line == ELine::Damaged)
		{
			break;
		}
		Start = End + 1;
	}
	return Start;
}

FString CorvaneJournalLines::ToText(int64 Number)
{
	return FString::Printf(TEXT("%lld"), Number);
}

bool CorvaneJournalLines::ParseNumber(const FString& Text, int64 Least, int64& Number)
{
	Number = FCString::Atoi64(*Text);
	return Number >= Least && ToText(Number).Equals(Text, ESearchCase::CaseSensitive);
}
