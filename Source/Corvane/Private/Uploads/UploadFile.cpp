#include "Uploads/UploadFile.h"

#include "FileFunctionsCorv.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"
#include "Uploads/UploadFiles.h"

bool CorvaneUpload::find(UCorvaneBPLibrary& Library, EHTTPCorvFileUpload DirectoryType, const FString& Path, FCorvUploadFile& File)
{
	File.path = fullPath(DirectoryType, Path);
	if (!FPaths::FileExists(File.path))
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: File not found: %s"), *File.path);
		return false;
	}
	File.name = FPaths::GetCleanFilename(File.path); // as the script spells it
	File.path = FPlatformFileManager::Get().GetPlatformFile().GetFilenameOnDisk(*File.path);
	if (Library.uploadFileList().isChanged(File.path))
	{
		logStillOpen(File.path);
		return false;
	}
	File.extension = FPaths::GetExtension(File.name);
	File.mimeType = Library.getMimeTypeInternal(File.extension);
	return true;
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
