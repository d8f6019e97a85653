#include "Tus/TusFiles.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"

namespace CorvaneTusFiles
{
	static constexpr int64 BlockBytes = 1024 * 1024;

	static bool SumUp(const FString& Path, int64 Start, int64 Number, FCorvaneFileHash& Hash)
	{
		TArray<uint8> Block;
		for (int64 Done = 0; Done < Number; Done += Block.Num())
		{
			if (!CorvaneFileBlocks::Read(Path, Start + Done, FMath::Min<int64>(BlockBytes, Number - Done), Block))
			{
				return false;
			}
			Hash.Update(Block.GetData(), Block.Num());
		}
		return true;
	}
} // namespace CorvaneTusFiles

FString FCorvaneTusFiles::JournalFolder(const FString& Wanted)
{
	return FPaths::ConvertRelativePathToFull(Wanted.IsEmpty() ? FPaths::ProjectSavedDir() + TEXT("Corvane/Uploads") : Wanted);
}

void FCorvaneTusFiles::Do(TUniqueFunction<void(FCorvaneTusFiles&)> Step)
{
	Strand->Add([Self = AsShared(), Step = MoveTemp(Step)] { Step(*Self); });
}

void FCorvaneTusFiles::Open(const FWish& Wish, TUniqueFunction<void(const FCorvaneTusFound&)> Tell)
{
	Do(
		[Wish, Tell = MoveTemp(Tell)](FCorvaneTusFiles& Self)
		{
			FCorvaneTusFound Found;
			Found.Result = Self.Find(Wish, Found);
			if (!Found.Result.IsOk())
			{
				Self.Lines.Close();
				Self.Claim.Release();
			}
			Tell(Found);
		});
}

FCorvaneFileResult FCorvaneTusFiles::Find(const FWish& Wish, FCorvaneTusFound& Found)
{
	FCorvaneFileResult Result = FCorvaneSentFile::Find(FPaths::ConvertRelativePathToFull(Wish.Path), File);
	Found.File = File;
	Endpoint = FCorvaneTusJournal::EndpointOf(Wish.Address);
	if (Result.IsOk())
	{
		Result = OpenJournal(Wish);
	}
	if (Result.IsOk() && Wish.Hash.Kind != ECorvaneHashKind::None &&
		!CorvaneFileBlocks::HashAll(File.Path, Wish.Hash.Kind, bStopReading, Found.Hash))
	{
		Result = bStopReading ? CorvaneFileFaults::Failed(ECorvaneTransferOutcome::Cancelled, TEXT("It was stopped."))
							  : CorvaneFileFaults::CannotRead(File.Path);
	}
	if (Result.IsOk() && !Wish.Hash.Expected.IsEmpty() && !Found.Hash.Equals(Wish.Hash.Expected, ESearchCase::CaseSensitive))
	{
		Result = CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::WrongHash, TEXT("What was to be sent has the hash ") + Found.Hash + TEXT("."));
	}
	if (Result.IsOk() && Wish.bResume)
	{
		Resume(Found);
	}
	return Result;
}

FCorvaneFileResult FCorvaneTusFiles::OpenJournal(const FWish& Wish)
{
	const FString Folder = JournalFolder(Wish.Folder);
	const FString Path = Folder + TEXT("/") + FCorvaneTusJournal::FileName(Wish.Address, File.Path);
	if (!Claim.Take(Path))
	{
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("Another transfer sends %s to the same address."), *File.Path));
	}
	if (!FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*Folder))
	{
		return CorvaneFileFaults::Failed(
			ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("The folder %s cannot be made."), *Folder));
	}
	const FCorvaneFileResult Blocked = CorvaneFileFaults::FolderInTheWay(Path);
	return Blocked.IsOk() ? Lines.Open(Path,
								[this](const TArray<uint8>& Bytes)
								{
									Journal = FCorvaneTusJournal::Read(Bytes);
									return Journal.ValidBytes;
								})
						  : Blocked;
}

void FCorvaneTusFiles::Resume(FCorvaneTusFound& Found) const
{
	const FCorvaneSentFile& Old = Journal.File;
	const bool bOurs = !Journal.Upload.Address.IsEmpty() && Journal.Endpoint.Equals(Endpoint, ESearchCase::CaseSensitive) &&
					   Old.Path.Equals(File.Path, ESearchCase::CaseSensitive);
	if (!bOurs)
	{
		return;
	}
	const bool bSameFile = Old.Size == File.Size && Old.ChangedAt.GetTicks() == File.ChangedAt.GetTicks() &&
						   CorvaneFileBlocks::HasStart(File.Path, Journal.Kept);
	if (bSameFile)
	{
		Found.Upload = Journal.Upload;
	}
	else
	{
		Found.WhyFromStart = TEXT("the file is another one than that which was being sent");
	}
}

void FCorvaneTusFiles::Begin(const FCorvaneTusUpload& Upload, TUniqueFunction<void(const FCorvaneFileResult&)> Tell)
{
	Do(
		[Upload, Tell = MoveTemp(Tell)](FCorvaneTusFiles& Self)
		{
			FCorvaneFileStart None;
			CorvaneFileBlocks::DescribeStart(Self.File.Path, 0, None);
			TArray<uint8> Begun = FCorvaneTusJournal::UploadLine(Self.Endpoint, Self.File, Upload);
			Begun.Append(FCorvaneTusJournal::KeptLine(None, Upload));
			Tell(Self.Lines.Append(Begun));
		});
}

void FCorvaneTusFiles::Keep(const FCorvaneTusUpload& Upload, int64 Offset)
{
	Do(
		[Upload, Offset](FCorvaneTusFiles& Self)
		{
			FCorvaneFileStart Kept;
			if (CorvaneFileBlocks::DescribeStart(Self.File.Path, Offset, Kept))
			{
				Self.Lines.Append(FCorvaneTusJournal::KeptLine(Kept, Upload));
			}
		});
}

void FCorvaneTusFiles::Sum(int64 Start, int64 Bytes, ECorvaneHashKind Kind, TUniqueFunction<void(const FString&)> Tell)
{
	Do(
		[Start, Bytes, Kind, Tell = MoveTemp(Tell)](FCorvaneTusFiles& Self)
		{
			FCorvaneFileHash Hash(Kind);
			Tell(CorvaneTusFiles::SumUp(Self.File.Path, Start, Bytes, Hash) ? Hash.Final() : FString());
		});
}

void FCorvaneTusFiles::Close(TUniqueFunction<void()> Tell)
{
	Do(
		[Tell = MoveTemp(Tell)](FCorvaneTusFiles& Self)
		{
			Self.Lines.Close();
			Self.Claim.Release();
			Tell();
		});
}

void FCorvaneTusFiles::Discard(TUniqueFunction<void()> Tell)
{
	Do(
		[Tell = MoveTemp(Tell)](FCorvaneTusFiles& Self)
		{
			Self.Lines.Delete();
			Self.Claim.Release();
			Tell();
		});
}
