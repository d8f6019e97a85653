#include "Rules/UploadTail.h"

#include "Misc/Paths.h"
#include "Rules/Multipart.h"

namespace CorvaneUploadTail
{
	static const TCHAR* const copyMark = TEXT("_UEUploadCopy_");

	static const ANSICHAR* const marker = "------UE4CorvanePlugin_";
	static constexpr int32 markerLength = 23;
	static constexpr int32 dashes = 6; // that the marker begins with
	static constexpr int32 shortestTail = markerLength + 5; // one digit, two dashes, a line end

	/** Bytes from begin up to, not including, end. */
	struct FBytes
	{
		const uint8* begin;
		const uint8* end;

		int64 num() const { return end - begin; }
	};

	static bool beginsWith(const FBytes& Bytes, const ANSICHAR* Text, int32 Length)
	{
		int32 Same = 0;
		while (Same < Length && Same < Bytes.num() && Bytes.begin[Same] == static_cast<uint8>(Text[Same]))
		{
			++Same;
		}
		return Same == Length;
	}

	static bool isBlank(uint8 Byte)
	{
		return Byte == ' ' || (Byte >= '\t' && Byte <= '\r');
	}

	/** The shortest end of the file that may be a tail, without the line break in front of it; empty when there is none. */
	static FBytes findTail(const FBytes& Bytes)
	{
		for (int64 Length = shortestTail; Length <= Bytes.num(); ++Length)
		{
			const FBytes Tail{Bytes.end - Length, Bytes.end};
			if (beginsWith(Tail, marker, dashes))
			{
				return Tail;
			}
		}
		return {Bytes.end, Bytes.end};
	}

	/** Takes away what stands around the number. @return false when it does not stand there. */
	static bool strip(FBytes& Tail)
	{
		while (Tail.num() > 0 && isBlank(Tail.end[-1]))
		{
			--Tail.end;
		}
		if (!beginsWith(Tail, marker, markerLength))
		{
			return false;
		}
		Tail.begin += markerLength;
		Tail.end -= 2;
		return Tail.num() > 0 && Tail.end[0] == '-' && Tail.end[1] == '-';
	}

	/** Reads digits with an optional sign. @return whether it was nothing else, and not more than 64 bits hold. */
	static bool readNumber(const FBytes& Text, int64& Number)
	{
		const bool bNegative = *Text.begin == '-';
		const uint8* Digit = Text.begin + (bNegative ? 1 : 0);
		bool bGood = Digit < Text.end;
		for (Number = 0; bGood && Digit < Text.end; ++Digit)
		{
			const int64 Value = *Digit - '0';
			bGood = Value >= 0 && Value <= 9 && Number <= (MAX_int64 - Value) / 10;
			Number = bGood ? Number * 10 + Value : 0;
		}
		Number = bNegative ? -Number : Number;
		return bGood;
	}
} // namespace CorvaneUploadTail

int64 CorvaneRules::sizeBeforeUpload(const uint8* Tail, int32 Number, int64 FileSize)
{
	constexpr int64 lineBreak = 2;
	constexpr int64 firstUnsaidSize = int64(1) << 31;
	CorvaneUploadTail::FBytes Delimiter = CorvaneUploadTail::findTail({Tail, Tail + Number});
	const int64 SizeInFront = FileSize - Delimiter.num() - lineBreak;
	int64 Said = 0;
	if (!CorvaneUploadTail::strip(Delimiter) || !CorvaneUploadTail::readNumber(Delimiter, Said))
	{
		return -1;
	}
	if (SizeInFront >= 0 && static_cast<int32>(SizeInFront) == Said)
	{
		return SizeInFront;
	}
	return SizeInFront >= firstUnsaidSize || Said < 0 ? -1 : Said;
}

bool CorvaneRules::endsInOwnTail(const uint8* Tail, int32 Number, int64 FileSize)
{
	const int64 Size = sizeBeforeUpload(Tail, Number, FileSize);
	const TArray<uint8> Own = fstringToByteArray(closingDelimiter(boundaryToken(Size)));
	if (Size < 0 || Size + Own.Num() != FileSize)
	{
		return false;
	}
	TArray<uint8> End;
	End.Append(Tail + Number - Own.Num(), Own.Num());
	return End == Own;
}

FString CorvaneRules::uploadCopyPath(const FString& Path, const FString& Guid)
{
	const FString Name = FPaths::GetBaseFilename(Path) + CorvaneUploadTail::copyMark + Guid + TEXT(".") + FPaths::GetExtension(Path);
	return Path.Replace(*FPaths::GetCleanFilename(Path), *Name);
}

bool CorvaneRules::isUploadCopyOf(const FString& Name, const FString& Path)
{
	const FString Begin = FPaths::GetBaseFilename(Path) + CorvaneUploadTail::copyMark;
	const FString End = FString(TEXT(".")) + FPaths::GetExtension(Path);
	return Name.StartsWith(Begin, ESearchCase::CaseSensitive) && Name.EndsWith(End, ESearchCase::CaseSensitive);
}

bool CorvaneRules::needsRepair(const FhttpRequest& Record)
{
	switch (Record.requestType)
	{
	case EHTTPCorvRequestType::PUT_STREAM_MP:
		return Record.originalFileSize > 0 && !Record.filePath.IsEmpty();
	case EHTTPCorvRequestType::PUT_STREAM_COPY:
		return FPaths::GetCleanFilename(Record.filePath).Contains(CorvaneUploadTail::copyMark, ESearchCase::CaseSensitive);
	default:
		return false;
	}
}

bool CorvaneRules::bodyBeginsInContentLength(const FhttpRequest& Record)
{
	return Record.requestType == EHTTPCorvRequestType::PUT_STREAM_MP || Record.requestType == EHTTPCorvRequestType::PUT_STREAM_COPY;
}
