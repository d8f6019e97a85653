#include "Files/JournalFile.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"

namespace CorvaneJournalFile
{
	/** More than the checkpoints of a fortnight. */
	static constexpr int64 LongestJournal = 64 << 20;

	static FCorvaneJournal ReadFrom(const FString& Path, int64 Size)
	{
		TArray<uint8> Bytes;
		return Size >= 0 && Size <= LongestJournal && CorvaneFileBlocks::Read(Path, 0, Size, Bytes) ? FCorvaneJournal::Read(Bytes)
																									: FCorvaneJournal();
	}
} // namespace CorvaneJournalFile

FCorvaneJournal FCorvaneJournalFile::Peek(const FString& InPath)
{
	return CorvaneJournalFile::ReadFrom(InPath, IFileManager::Get().FileSize(*InPath));
}

FCorvaneFileResult FCorvaneJournalFile::Open(const FString& InPath)
{
	Path = InPath;
	Handle.Reset(FPlatformFileManager::Get().GetPlatformFile().OpenWrite(*Path, true, true));
	if (!Handle.IsValid())
	{
		return CorvaneFileFaults::OpenFailed(Path);
	}
	const int64 Size = Handle->Size();
	Journal = CorvaneJournalFile::ReadFrom(Path, Size);
	GoodBytes = Journal.ValidBytes;
	bIsEmpty = Size == 0;
	return FCorvaneFileResult();
}

FCorvaneFileResult FCorvaneJournalFile::Append(const TArray<uint8>& Line)
{
	const int64 GoodBefore = GoodBytes;
	FCorvaneFileResult Fault = AppendWithoutWaiting(Line);
	Fault = Fault.IsOk() ? Flush() : Fault;
	GoodBytes = Fault.IsOk() ? GoodBytes : GoodBefore;
	return Fault;
}

FCorvaneFileResult FCorvaneJournalFile::AppendWithoutWaiting(const TArray<uint8>& Line)
{
	// What a line that failed, or was torn, has left must not stand before this one.
	const bool bWritten = Handle->Truncate(GoodBytes) && Handle->Seek(GoodBytes) && Handle->Write(Line.GetData(), Line.Num());
	bIsEmpty = false;
	if (!bWritten)
	{
		return CorvaneFileFaults::WriteFailed(Path, Line.Num());
	}
	GoodBytes += Line.Num();
	return FCorvaneFileResult();
}

FCorvaneFileResult FCorvaneJournalFile::Flush()
{
	return Handle->Flush(true) ? FCorvaneFileResult() : CorvaneFileFaults::WriteFailed(Path, 0);
}

void FCorvaneJournalFile::Delete()
{
	// Deleted first, so that nobody gets it in between; some systems want it closed before.
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const bool bDeleted = Files.DeleteFile(*Path);
	Handle.Reset();
	if (!bDeleted)
	{
		Files.DeleteFile(*Path);
	}
}

void FCorvaneJournalFile::Close()
{
	if (Handle.IsValid() && bIsEmpty)
	{
		Delete();
	}
	Handle.Reset();
}
