#include "Files/LineFile.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "Files/HeldFile.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"

namespace CorvaneLineFile
{
	/** More than the checkpoints of a fortnight. */
	static constexpr int64 LongestJournal = 64 << 20;

	static TArray<uint8> ReadAll(const FString& Path, int64 Size)
	{
		TArray<uint8> Bytes;
		return Size >= 0 && Size <= LongestJournal && CorvaneFileBlocks::Read(Path, 0, Size, Bytes) ? Bytes : TArray<uint8>();
	}
} // namespace CorvaneLineFile

TArray<uint8> FCorvaneLineFile::ReadLines(const FString& InPath)
{
	return CorvaneLineFile::ReadAll(InPath, IFileManager::Get().FileSize(*InPath));
}

FCorvaneFileResult FCorvaneLineFile::Open(const FString& InPath, const TFunction<int64(const TArray<uint8>&)>& Read)
{
	Path = InPath;
	Handle.Reset(FPlatformFileManager::Get().GetPlatformFile().OpenWrite(*Path, true, true));
	if (!Handle.IsValid())
	{
		return CorvaneFileFaults::OpenFailed(Path);
	}
	const int64 Size = Handle->Size();
	GoodBytes = Read(CorvaneLineFile::ReadAll(Path, Size));
	bIsEmpty = Size == 0;
	return FCorvaneFileResult();
}

FCorvaneFileResult FCorvaneLineFile::Append(const TArray<uint8>& Line)
{
	const int64 GoodBefore = GoodBytes;
	FCorvaneFileResult Fault = AppendWithoutWaiting(Line);
	Fault = Fault.IsOk() ? Flush() : Fault;
	GoodBytes = Fault.IsOk() ? GoodBytes : GoodBefore;
	return Fault;
}

FCorvaneFileResult FCorvaneLineFile::AppendWithoutWaiting(const TArray<uint8>& Line)
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

FCorvaneFileResult FCorvaneLineFile::Flush()
{
	return Handle->Flush(true) ? FCorvaneFileResult() : CorvaneFileFaults::WriteFailed(Path, 0);
}

void FCorvaneLineFile::Delete()
{
	CorvaneHeldFile::Delete(Handle, Path);
}

void FCorvaneLineFile::Close()
{
	if (Handle.IsValid() && bIsEmpty)
	{
		Delete();
	}
	Handle.Reset();
}
