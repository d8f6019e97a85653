#include "Uploads/UploadRepair.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Rules/Multipart.h"
#include "Rules/UploadTail.h"

namespace CorvaneUploadRepair
{
	static IPlatformFile& files()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}

	static bool cut(IFileHandle& File, int64 Size)
	{
		return File.Size() >= Size && File.Truncate(Size) && File.Flush();
	}

	/** Whether the file is its first Size bytes and the tail that belongs to that size, and nothing else. */
	static bool isAsUploadLeftIt(IFileHandle& File, int64 Size)
	{
		const TArray<uint8> Tail = CorvaneRules::fstringToByteArray(CorvaneRules::closingDelimiter(CorvaneRules::boundaryToken(Size)));
		TArray<uint8> End;
		End.SetNumUninitialized(Tail.Num());
		return File.Size() == Size + Tail.Num() && File.Seek(Size) && File.Read(End.GetData(), End.Num()) && End == Tail;
	}

	static void repairStreamed(const FhttpRequest& Record)
	{
		const TUniquePtr<IFileHandle> Reader(files().OpenRead(*Record.filePath, true));
		if (!Reader.IsValid())
		{
			return;
		}
		if (isAsUploadLeftIt(*Reader, Record.originalFileSize))
		{
			CorvaneUpload::truncateAndLog(Record.filePath, Record.originalFileSize);
		}
		else
		{
			CorvaneUpload::logTruncation(false, Record.filePath);
		}
	}

	static void deleteCopy(const FString& Path)
	{
		if (files().DeleteFile(*Path))
		{
			UE_LOG(LogTemp, Display, TEXT("UCorvaneBPLibrary: upload copy has been deleted: %s"), *Path);
		}
		else
		{
			UE_LOG(LogTemp, Display, TEXT("UCorvaneBPLibrary: upload copy could not be deleted: %s"), *Path);
		}
	}
} // namespace CorvaneUploadRepair

void CorvaneUpload::repair(const FhttpRequest& Record)
{
	if (!CorvaneRules::needsRepair(Record))
	{
		return;
	}
	if (Record.requestType == EHTTPCorvRequestType::PUT_STREAM_COPY)
	{
		CorvaneUploadRepair::deleteCopy(Record.filePath);
	}
	else
	{
		CorvaneUploadRepair::repairStreamed(Record);
	}
}

void CorvaneUpload::logTruncation(bool bDone, const FString& Path)
{
	if (bDone)
	{
		UE_LOG(LogTemp, Display, TEXT("UCorvaneBPLibrary: truncate okay: %s"), *Path);
	}
	else
	{
		UE_LOG(LogTemp, Display, TEXT("UCorvaneBPLibrary: truncate fail: %s"), *Path);
	}
}

void CorvaneUpload::truncateAndLog(const FString& Path, int64 Size)
{
	const TUniquePtr<IFileHandle> File(CorvaneUploadRepair::files().OpenWrite(*Path, true, true));
	if (File.IsValid())
	{
		logTruncation(CorvaneUploadRepair::cut(*File, Size), Path);
	}
}

void CorvaneUpload::cutBack(const FString& Path, int64 Size)
{
	const TUniquePtr<IFileHandle> File(CorvaneUploadRepair::files().OpenWrite(*Path, true, true));
	if (File.IsValid())
	{
		CorvaneUploadRepair::cut(*File, Size);
	}
}
