#include "Files/PartFile.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "Files/TargetReplacement.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

FCorvaneFinished FCorvanePartFile::Finish(const FCorvaneFinishWish& Wish)
{
	FCorvaneFinished Finished;
	Finished.Result = bWholeAlready ? FCorvaneFileResult() : CheckSize();
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
	Close();
	return Finished;
}

FCorvaneFileResult FCorvanePartFile::CheckSize()
{
	if (Total >= 0 && Length != Total)
	{
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::WrongSize, FString::Printf(TEXT("%lld bytes came of %lld."), Length, Total));
	}
	const bool bEndsThere = Part->Size() == Length || Shorten(Length);
	return bEndsThere ? Checkpoint() : CorvaneFileFaults::WriteFailed(PartName(), 0);
}

bool FCorvanePartFile::HashOf(const FString& File, ECorvaneHashKind Kind, FString& OutHash)
{
	if (!bWholeAlready && Hash.Covers(Kind, Length))
	{
		OutHash = Hash.Final();
		return true;
	}
	return CorvaneFileBlocks::HashAll(File, Kind, OutHash);
}

FCorvaneFileResult FCorvanePartFile::CheckHash(const FString& File, const FCorvaneHashWish& Wish, FString& OutHash)
{
	if (Wish.Kind != ECorvaneHashKind::None && !HashOf(File, Wish.Kind, OutHash))
	{
		return CorvaneFileFaults::CannotRead(File);
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
	FCorvaneFileStart Whole;
	if (Fault.IsOk() && !CorvaneFileBlocks::DescribeStart(PartName(), Length, Whole))
	{
		Fault = CorvaneFileFaults::CannotRead(PartName());
	}
	if (Fault.IsOk())
	{
		Fault = Journal.Append(FCorvaneJournal::WholeLine(Whole, !CorvaneFileBlocks::IsFile(Target, Whole)));
	}
	return Fault.IsOk() ? PutInPlace(Wish.FileTime) : Fault;
}

FCorvaneFileResult FCorvanePartFile::PutInPlace(const FDateTime& FileTime)
{
	ClosePart(); // not every system moves what is open
	if (FileTime.GetTicks() > FDateTime::MinValue().GetTicks())
	{
		FPlatformFileManager::Get().GetPlatformFile().SetTimeStamp(*PartName(), FileTime);
	}
	if (!CorvaneTargetReplacement::Replace(Target, PartName()))
	{
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("The new file cannot take the place of %s."), *Target));
	}
	Journal.Delete();
	return FCorvaneFileResult();
}
