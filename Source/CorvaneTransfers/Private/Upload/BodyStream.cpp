#include "Upload/BodyStream.h"

#include "Containers/StringConv.h"
#include "Files/FileFaults.h"
#include "HAL/PlatformFileManager.h"
#include "HAL/UnrealMemory.h"

FCorvaneBodySegment FCorvaneBodySegment::OfBytes(TArray<uint8> InBytes)
{
	FCorvaneBodySegment Segment;
	Segment.Bytes = MoveTemp(InBytes);
	return Segment;
}

FCorvaneBodySegment FCorvaneBodySegment::OfText(const FString& Text)
{
	const FTCHARToUTF8 Utf8(*Text, Text.Len());
	FCorvaneBodySegment Segment;
	Segment.Bytes.Append(reinterpret_cast<const uint8*>(Utf8.Get()), Utf8.Length());
	return Segment;
}

FCorvaneBodySegment FCorvaneBodySegment::OfFile(const FCorvaneSentFile& InFile, int64 InStart, int64 InLength)
{
	FCorvaneBodySegment Segment;
	Segment.File = InFile;
	Segment.Start = InStart;
	Segment.Length = InLength < 0 ? InFile.Size - InStart : InLength;
	return Segment;
}

FCorvaneBodyStream::FCorvaneBodyStream(
	TArray<FCorvaneBodySegment> InSegments, const FCorvaneHashWish& InHash, TUniqueFunction<void()> InTellFault)
	: Segments(MoveTemp(InSegments))
	, Wish(InHash)
	, TellFault(MoveTemp(InTellFault))
	, HashOnTheWay(InHash.Kind)
{
	SetIsLoading(true);
	for (const FCorvaneBodySegment& Segment : Segments)
	{
		Total += Segment.Num();
		BytesOfFiles += Segment.IsFile() ? Segment.Num() : 0;
	}
	Restart();
}

void FCorvaneBodyStream::Restart()
{
	File.Reset();
	Position = Within = ReadOfFiles = 0;
	Current = 0;
	HashOnTheWay.Begin();
}

void FCorvaneBodyStream::Seek(int64 NewPosition)
{
	if (NewPosition == 0)
	{
		Restart();
	}
	else if (NewPosition != Position)
	{
		SetError(); // a hash, and the look at a file that is left, need every byte
	}
}

void FCorvaneBodyStream::Serialize(void* Value, int64 Number)
{
	const bool bHad = !IsError() && Number >= 0 && Number <= Total - Position && Read(static_cast<uint8*>(Value), Number);
	if (bHad)
	{
		if (PartOfPace.IsValid())
		{
			PartOfPace->Hold(Number);
		}
		HandedOut += Number;
		return;
	}
	SetError();
	if (Number > 0)
	{
		FMemory::Memzero(Value, static_cast<SIZE_T>(Number)); // what was there is nobody else's business
	}
}

bool FCorvaneBodyStream::Read(uint8* To, int64 Number)
{
	while (Number > 0)
	{
		const FCorvaneBodySegment& Segment = Segments[Current];
		const int64 Part = FMath::Min<int64>(Number, Segment.Num() - Within);
		if (!ReadPart(Segment, To, Part))
		{
			return false;
		}
		To += Part;
		Number -= Part;
		Within += Part;
		Position += Part;
		if (!LeaveFinished())
		{
			return false;
		}
	}
	return true;
}

bool FCorvaneBodyStream::ReadPart(const FCorvaneBodySegment& Segment, uint8* To, int64 Number)
{
	if (!Segment.IsFile())
	{
		FMemory::Memcpy(To, Segment.Bytes.GetData() + Within, static_cast<SIZE_T>(Number));
		return true;
	}
	if (!File.IsValid() && !Open(Segment))
	{
		return false;
	}
	if (!File->Read(To, Number))
	{
		return Fail(Segment.File.IsUnchanged() ? CorvaneFileFaults::CannotRead(Segment.File.Path)
											   : CorvaneFileFaults::ChangedWhileSent(Segment.File.Path));
	}
	HashOnTheWay.Update(ReadOfFiles, To, Number);
	ReadOfFiles += Number;
	return true;
}

bool FCorvaneBodyStream::Open(const FCorvaneBodySegment& Segment)
{
	constexpr bool bWhileItIsWritten = true;
	File.Reset(FPlatformFileManager::Get().GetPlatformFile().OpenRead(*Segment.File.Path, bWhileItIsWritten));
	if (!File.IsValid())
	{
		return Fail(CorvaneFileFaults::CannotRead(Segment.File.Path));
	}
	const int64 Place = Segment.Start + Within;
	if (!Segment.File.IsUnchanged() || File->Size() < Place) // a place behind the end must not be sought
	{
		return Fail(CorvaneFileFaults::ChangedWhileSent(Segment.File.Path));
	}
	return File->Seek(Place) || Fail(CorvaneFileFaults::CannotRead(Segment.File.Path));
}

/** Goes on to the next segment that has bytes, as soon as the current one has none left: before its last bytes are handed out. */
bool FCorvaneBodyStream::LeaveFinished()
{
	while (Current < Segments.Num() && Within == Segments[Current].Num())
	{
		if (Segments[Current].IsFile() && !LeaveFile(Segments[Current].File))
		{
			return false;
		}
		++Current;
		Within = 0;
	}
	return true;
}

bool FCorvaneBodyStream::LeaveFile(const FCorvaneSentFile& Left)
{
	const bool bSame = Left.IsUnchanged() && (!File.IsValid() || File->Size() == Left.Size);
	File.Reset();
	if (!bSame)
	{
		return Fail(CorvaneFileFaults::ChangedWhileSent(Left.Path));
	}
	return !HashOnTheWay.Covers(Wish.Kind, BytesOfFiles) || CheckHash();
}

/** Behind the last byte out of a file. */
bool FCorvaneBodyStream::CheckHash()
{
	Hash = HashOnTheWay.Final();
	return Wish.Expected.IsEmpty() || Hash.Equals(Wish.Expected, ESearchCase::CaseSensitive) ||
		   Fail(
			   CorvaneFileFaults::Failed(ECorvaneTransferOutcome::WrongHash, TEXT("What was to be sent has the hash ") + Hash + TEXT(".")));
}

bool FCorvaneBodyStream::Fail(const FCorvaneFileResult& Why)
{
	Fault = Why;
	SetError();
	if (TellFault)
	{
		TellFault();
	}
	return false;
}

FCorvaneBodyEnd FCorvaneBodyStream::Finish()
{
	TellFault = TUniqueFunction<void()>();
	if (!IsError())
	{
		LeaveFinished(); // such as files without a byte, which nobody reads
	}
	File.Reset();
	FCorvaneBodyEnd End;
	End.Result = Fault;
	End.bWhole = !IsError() && Position == Total;
	End.Hash = End.bWhole ? Hash : FString();
	return End;
}
