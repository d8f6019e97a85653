#include "CorvaneBPLibrary.h"

#include "HAL/FileManager.h"
#include "Rules/UploadTail.h"
#include "Serialization/Archive.h"
#include "Uploads/UploadFile.h"
#include "Uploads/UploadRepair.h"

namespace CorvaneUploadLeftovers
{
	/** @return the size that the file had before its upload; -1 when it shows no trace of one or cannot be read. */
	static int64 search(const FString& Path)
	{
		const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path));
		if (!Reader.IsValid())
		{
			return -1;
		}
		const int64 FileSize = Reader->TotalSize();
		TArray<uint8> Tail;
		Tail.SetNumUninitialized(static_cast<int32>(FMath::Min<int64>(FileSize, CorvaneRules::longestUploadTail)));
		Reader->Seek(FileSize - Tail.Num());
		Reader->Serialize(Tail.GetData(), Tail.Num());
		return Reader->Close() ? CorvaneRules::sizeBeforeUpload(Tail.GetData(), Tail.Num(), FileSize) : -1;
	}
} // namespace CorvaneUploadLeftovers

void UCorvaneBPLibrary::searchUploadLeftovers(
	EHTTPCorvFileUpload InDirectoryType, FString InFilePath, bool& bOutFound, int64& OutOriginalFileSize)
{
	const int64 Size = CorvaneUploadLeftovers::search(CorvaneUpload::fullPath(InDirectoryType, InFilePath));
	bOutFound = Size >= 0;
	if (bOutFound)
	{
		OutOriginalFileSize = Size;
	}
}

bool UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload InDirectoryType, FString InFilePath)
{
	bool bFound = false;
	int64 OriginalFileSize = 0;
	searchUploadLeftovers(InDirectoryType, InFilePath, bFound, OriginalFileSize);
	const FString Path = CorvaneUpload::fullPath(InDirectoryType, InFilePath);
	if (bFound && OriginalFileSize > 0 && IFileManager::Get().FileSize(*Path) >= OriginalFileSize)
	{
		CorvaneUpload::truncateAndLog(Path, OriginalFileSize);
	}
	return false; // on every path: scripts have come to know it so, and the log tells the outcome
}
