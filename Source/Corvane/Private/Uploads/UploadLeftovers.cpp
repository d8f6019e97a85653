#include "Uploads/UploadLeftovers.h"

#include "CorvaneBPLibrary.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/DateTime.h"
#include "Misc/Paths.h"
#include "Rules/UploadTail.h"
#include "Uploads/ChangedFiles.h"
#include "Uploads/UploadFile.h"
#include "Uploads/UploadRepair.h"

namespace CorvaneUploadLeftovers
{
	static IPlatformFile& files()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}

	/** The last bytes of a file, as many as the rules want to see. @return the size of the file; -1 when it cannot be read. */
	static int64 readEnd(const FString& Path, TArray<uint8>& End)
	{
		const TUniquePtr<IFileHandle> Reader(files().OpenRead(*Path, true)); // others may be writing to it
		if (!Reader.IsValid())
		{
			return -1;
		}
		const int64 FileSize = Reader->Size();
		End.SetNumUninitialized(static_cast<int32>(FMath::Min<int64>(FileSize, CorvaneRules::longestUploadTail)));
		return Reader->Seek(FileSize - End.Num()) && Reader->Read(End.GetData(), End.Num()) ? FileSize : -1;
	}

	/** Whether two names seem to be those of one file: nobody can ask a link for the file that it stands for. */
	static bool lookTheSame(const FString& One, const FString& Other)
	{
		return files().FileSize(*One) == files().FileSize(*Other) &&
			   files().GetTimeStamp(*One).GetTicks() == files().GetTimeStamp(*Other).GetTicks();
	}

	/** @param Path  spelled as on disk. */
	static bool isBeingUploaded(const FString& Path)
	{
		for (const UCorvaneBPLibrary* Library : UCorvaneBPLibrary::libraries())
		{
			if (Library->changedFileList().isChanged(Path))
			{
				return true;
			}
			for (const FString& Changed : Library->changedFileList().paths())
			{
				if (lookTheSame(Changed, Path))
				{
					return true;
				}
			}
		}
		return false;
	}

	static void tellCopies(const FString& Path)
	{
		const FString Directory = FPaths::GetPath(Path) + TEXT("/"); // the root's own path is empty without it
		TArray<FString> Names;
		IFileManager::Get().FindFiles(Names, *Directory, nullptr);
		for (const FString& Name : Names)
		{
			const FString Copy = Directory + FPaths::GetCleanFilename(Name);
			if (CorvaneRules::isUploadCopyOf(FPaths::GetCleanFilename(Name), Path) && !isBeingUploaded(Copy))
			{
				UE_LOG(LogTemp, Display, TEXT("UCorvaneBPLibrary: upload copy has been left behind: %s"), *Copy);
			}
		}
	}
} // namespace CorvaneUploadLeftovers

int64 CorvaneUpload::sizeBeforeUpload(const FString& Path)
{
	TArray<uint8> End;
	const int64 FileSize = CorvaneUploadLeftovers::readEnd(Path, End);
	return FileSize < 0 ? -1 : CorvaneRules::sizeBeforeUpload(End.GetData(), End.Num(), FileSize);
}

bool CorvaneUpload::endsInOwnTail(const FString& Path)
{
	TArray<uint8> End;
	const int64 FileSize = CorvaneUploadLeftovers::readEnd(Path, End);
	return FileSize >= 0 && CorvaneRules::endsInOwnTail(End.GetData(), End.Num(), FileSize);
}

void UCorvaneBPLibrary::searchUploadLeftovers(
	EHTTPCorvFileUpload InDirectoryType, FString InFilePath, bool& bOutFound, int64& OutOriginalFileSize)
{
	const FString Path = CorvaneUpload::onDisk(CorvaneUpload::fullPath(InDirectoryType, InFilePath));
	const int64 Size = CorvaneUpload::sizeBeforeUpload(Path);
	bOutFound = Size >= 0;
	if (bOutFound)
	{
		OutOriginalFileSize = Size;
	}
	CorvaneUploadLeftovers::tellCopies(Path);
}

bool UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload InDirectoryType, FString InFilePath)
{
	const FString Path = CorvaneUpload::onDisk(CorvaneUpload::fullPath(InDirectoryType, InFilePath));
	const int64 Size = CorvaneUpload::sizeBeforeUpload(Path);
	if (Size > 0 && IFileManager::Get().FileSize(*Path) >= Size)
	{
		if (CorvaneUploadLeftovers::isBeingUploaded(Path))
		{
			CorvaneUpload::logTruncation(false, Path); // it would be cut under whoever reads it, and is repaired anyway
		}
		else
		{
			CorvaneUpload::truncateAndLog(Path, Size);
		}
	}
	return false; // on every path, as scripts know it
}
