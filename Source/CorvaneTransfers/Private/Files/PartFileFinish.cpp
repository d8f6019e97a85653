#include "Files/PartFile.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "Files/TargetReplacement.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

namespace CorvanePartFile
{
	/** What is fetched again in a moment is not worth a look at its bytes and a wait for the disk. */
	static constexpr int64 LongFile = 16 << 20;
} // namespace CorvanePartFile

FCorvaneFinished FCorvanePartFile::Finish(const FCorvaneFinishWish& Wish)
{
	FCorvaneFinished Finished;
	if (!bWholeAlready)
	{
		Finished.Result = CheckSize();
		Finished.Result = Finished.Result.IsOk() ? SecureBeforeFinish(Wish.Hash) : Finished.Result;
	}
	if (Finished.Result.IsOk())
	{
		Finished.Result = CheckHash(bWholeAlready ? Target : PartName(), Wish.Hash, Finished.Hash);
	}
	if (Finished.Result.Failure == ECorvaneTransferOutcome::WrongHash || (Finished.Result.IsOk() && bWholeAlready))
	{
		Discard();
	}
	else if (Finished.Result.IsOk())
	{
		Finished.Result = Replace(Wish);
	}
	Finished.KeptBytes = Close();
	return Finished;
}

FCorvaneFileResult FCorvanePartFile::CheckSize()
{
	if (Source.Total >= 0 && Length != Source.Total)
	{
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::WrongSize, FString::Printf(TEXT("%lld bytes came of %lld."), Length, Source.Total));
	}
	const bool bEndsThere = Part->Size() == Length || Shorten(Length);
	return bEndsThere ? FCorvaneFileResult() : CorvaneFileFaults::WriteFailed(PartName(), 0);
}

/** No byte may be on its way to the disk when the file takes its place. While it is read once more the journal vouches for it, too. */
FCorvaneFileResult FCorvanePartFile::SecureBeforeFinish(const FCorvaneHashWish& Wish)
{
	const bool bWillBeRead = Wish.Kind != ECorvaneHashKind::None && !Hash.Covers(Wish.Kind, Length);
	return bWillBeRead ? Checkpoint() : FlushPart();
}

bool FCorvanePartFile::HashOf(const FString& File, ECorvaneHashKind Kind, FString& OutHash)
{
	if (!bWholeAlready && Hash.Covers(Kind, Length))
	{
		OutHash = Hash.Final();
		return true;
	}
	return CorvaneFileBlocks::HashAll(File, Kind, bStopReading, OutHash);
}

FCorvaneFileResult FCorvanePartFile::CheckHash(const FString& File, const FCorvaneHashWish& Wish, FString& OutHash)
{
	if (Wish.Kind != ECorvaneHashKind::None && !HashOf(File, Wish.Kind, OutHash))
	{
		return bStopReading ? CorvaneFileFaults::Failed(ECorvaneTransferOutcome::Cancelled, TEXT("It was stopped."))
							: CorvaneFileFaults::CannotRead(File);
	}
	return Wish.Expected.IsEmpty() || Wish.Expected.Equals(OutHash, ESearchCase::CaseSensitive)
			   ? FCorvaneFileResult()
			   : CorvaneFileFaults::Failed(ECorvaneTransferOutcome::WrongHash,
					 FString::Printf(TEXT("The hash of what came is %s, and %s was expected."), *OutHash, *Wish.Expected));
}

FCorvaneFileResult FCorvanePartFile::Replace(const FCorvaneFinishWish& Wish)
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	FCorvaneFileResult Fault = CorvaneFileFaults::CannotBeReplaced(Target);
	if (Fault.IsOk() && !Wish.bMayReplace && Files.FileExists(*Target))
	{
		Fault = CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("%s exists by now, and is not to be replaced."), *Target));
	}
	if (Fault.IsOk() && Length >= CorvanePartFile::LongFile)
	{
		Fault = VouchForWhole();
	}
	return Fault.IsOk() ? PutInPlace(Wish.FileTime) : Fault;
}

/** From here on the target is known for the whole file, should it be that. */
FCorvaneFileResult FCorvanePartFile::VouchForWhole()
{
	FCorvaneFileStart Whole;
	if (!CorvaneFileBlocks::DescribeStart(PartName(), Length, Whole))
	{
		return CorvaneFileFaults::CannotRead(PartName());
	}
	FCorvaneFileResult Fault = NeedJournal(Source);
	Fault = Fault.IsOk() ? Journal.Append(FCorvaneJournal::WholeLine(Whole, !CorvaneFileBlocks::IsFile(Target, Whole))) : Fault;
	VouchedLength = Fault.IsOk() ? Length : VouchedLength;
	return Fault;
}

FCorvaneFileResult FCorvanePartFile::PutInPlace(const FDateTime& FileTime)
{
	if (!Journal.IsOpen() && MoveWhileOpen(FileTime))
	{
		return FCorvaneFileResult();
	}
	const FCorvaneFileResult Fault = NeedJournal(Source);
	return Fault.IsOk() ? MoveClosed(FileTime) : Fault;
}

/** Nobody can come in between, but not every system moves what is open. */
bool FCorvanePartFile::MoveWhileOpen(const FDateTime& FileTime)
{
	EarlyFlush.Stop();
	SetTime(FileTime);
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const bool bIsStillThere = Length > 0 && Files.FileSize(*PartName()) == Length;
	if (!bIsStillThere || !Files.MoveFile(*Target, *PartName()))
	{
		return false;
	}
	Part.Reset();
	return true;
}

FCorvaneFileResult FCorvanePartFile::MoveClosed(const FDateTime& FileTime)
{
	ClosePart();
	SetTime(FileTime);
	if (!CorvaneTargetReplacement::Replace(
			Target, PartName(), [this] { return Length >= CorvanePartFile::LongFile || VouchForWhole().IsOk(); }))
	{
		if (VouchedLength < Length)
		{
			VouchForWhole(); // or the next run would fetch it all again
		}
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("The new file cannot take the place of %s."), *Target));
	}
	Journal.Delete();
	return FCorvaneFileResult();
}

void FCorvanePartFile::SetTime(const FDateTime& FileTime) const
{
	if (FileTime.GetTicks() > FDateTime::MinValue().GetTicks())
	{
		FPlatformFileManager::Get().GetPlatformFile().SetTimeStamp(*PartName(), FileTime);
	}
}
