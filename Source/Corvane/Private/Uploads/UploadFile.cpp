#include "Uploads/UploadFile.h"

#include "FileFunctionsCorv.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"
#include "Uploads/ChangedFiles.h"
#include "Uploads/UploadLeftovers.h"

bool CorvaneUpload::find(UCorvaneBPLibrary& Library, EHTTPCorvFileUpload DirectoryType, const FString& Path, FCorvUploadFile& File)
{
	File.path = fullPath(DirectoryType, Path);
	if (!FPaths::FileExists(File.path))
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: File not found: %s"), *File.path);
		return false;
	}
	File.name = FPaths::GetCleanFilename(File.path); // as the script spells it
	File.path = onDisk(File.path);
	if (!hasOwnEnd(Library, File.path))
	{
		return false;
	}
	File.extension = FPaths::GetExtension(File.name);
	File.mimeType = Library.getMimeTypeInternal(File.extension);
	return true;
}

bool CorvaneUpload::hasOwnEnd(const UCorvaneBPLibrary& Library, const FString& Path)
{
	// The list knows the file by one name only and nothing of other programs; the file itself shows what they did to it.
	const bool bOwn = !Library.changedFileList().isChanged(Path) && !endsInOwnTail(Path);
	if (!bOwn)
	{
		logStillOpen(Path);
	}
	return bOwn;
}

FString CorvaneUpload::onDisk(const FString& Path)
{
	return FPlatformFileManager::Get().GetPlatformFile().GetFilenameOnDisk(*Path);
}

FString CorvaneUpload::fullPath(EHTTPCorvFileUpload DirectoryType, const FString& Path)
{
	return UFileFunctionsCorv::getCleanDirectory(static_cast<EFileFunctionsCorvDirectoryType>(DirectoryType), Path); // the same numbers
}

void CorvaneUpload::logUnreadable(const FString& Path)
{
	UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Can't read File: %s"), *Path);
}

void CorvaneUpload::logStillOpen(const FString& Path)
{
	UE_LOG(LogTemp, Error,
		TEXT(
			"UCorvaneBPLibrary: Can't read File. If you tried to upload the same file a few seconds ago, it may still be open. Please wait a few seconds until the file is closed. %s"),
		*Path);
}
