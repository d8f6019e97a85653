#include "Files/FileFaults.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "HAL/PlatformMisc.h"
#include "Misc/Paths.h"

FCorvaneFileResult CorvaneFileFaults::Failed(ECorvaneTransferOutcome Outcome, const FString& Sentence)
{
	FCorvaneFileResult Result;
	Result.Failure = Outcome;
	Result.Sentence = Sentence;
	return Result;
}

FCorvaneFileResult CorvaneFileFaults::FolderInTheWay(const FString& File)
{
	return FPlatformFileManager::Get().GetPlatformFile().DirectoryExists(*File)
			   ? Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("%s is a folder, no file can take its place."), *File))
			   : FCorvaneFileResult();
}

FCorvaneFileResult CorvaneFileFaults::CannotBeReplaced(const FString& File)
{
	return FPlatformFileManager::Get().GetPlatformFile().IsReadOnly(*File)
			   ? Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("%s is read-only."), *File))
			   : FolderInTheWay(File);
}

FCorvaneFileResult CorvaneFileFaults::CannotRead(const FString& File)
{
	return Failed(ECorvaneTransferOutcome::CannotRead, FString::Printf(TEXT("%s cannot be read."), *File));
}

FCorvaneFileResult CorvaneFileFaults::ChangedWhileSent(const FString& File)
{
	if (!FPlatformFileManager::Get().GetPlatformFile().FileExists(*File))
	{
		return CannotRead(File);
	}
	FCorvaneFileResult Result = Failed(ECorvaneTransferOutcome::CannotRead, FString::Printf(TEXT("%s changed while it was sent."), *File));
	Result.bChanged = true;
	return Result;
}

FCorvaneFileResult CorvaneFileFaults::OpenFailed(const FString& File)
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const FCorvaneFileResult Folder = FolderInTheWay(File);
	if (!Folder.IsOk())
	{
		return Folder;
	}
	if (!Files.FileExists(*File))
	{
		return Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("%s cannot be made."), *File));
	}
	if (Files.IsReadOnly(*File))
	{
		return Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("%s is read-only."), *File));
	}
	return Failed(ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("%s is in use: another program transfers the same file."), *File));
}

FCorvaneFileResult CorvaneFileFaults::WriteFailed(const FString& File, int64 Bytes)
{
	constexpr int64 Slack = 1 << 20; // file systems are full before the last byte is taken
	const FCorvaneFileResult Room = NotEnoughRoom(FPaths::GetPath(File), Bytes + Slack);
	return Room.IsOk()
			   ? Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("%s does not take what is written to it."), *File))
			   : Room;
}

FCorvaneFileResult CorvaneFileFaults::NotEnoughRoom(const FString& Folder, int64 Bytes)
{
	uint64 Total = 0;
	uint64 Free = 0;
	if (Bytes <= 0 || !FPlatformMisc::GetDiskTotalAndFreeSpace(Folder, Total, Free) || Free >= static_cast<uint64>(Bytes))
	{
		return FCorvaneFileResult();
	}
	return Failed(ECorvaneTransferOutcome::DiskFull,
		FString::Printf(TEXT("The disk of %s has %llu bytes left, and %lld are needed."), *Folder, Free, Bytes));
}
