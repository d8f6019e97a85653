#include "FileFunctionsCorv.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"

namespace CorvaneFileFunctions
{
	static IPlatformFile& files()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}
} // namespace CorvaneFileFunctions

FString UFileFunctionsCorv::getCleanDirectory(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	if (InDirectoryType == EFileFunctionsCorvDirectoryType::E_ad)
	{
		return FPaths::ConvertRelativePathToFull(InFilePath);
	}
	return FPaths::ConvertRelativePathToFull(FPaths::ProjectDir() + InFilePath);
}

bool UFileFunctionsCorv::fileExists(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return FPaths::FileExists(getCleanDirectory(InDirectoryType, InFilePath));
}

bool UFileFunctionsCorv::directoryExists(EFileFunctionsCorvDirectoryType InDirectoryType, FString InPath)
{
	return FPaths::DirectoryExists(getCleanDirectory(InDirectoryType, InPath));
}

bool UFileFunctionsCorv::createDirectory(EFileFunctionsCorvDirectoryType InDirectoryType, FString InPath)
{
	return CorvaneFileFunctions::files().CreateDirectory(*getCleanDirectory(InDirectoryType, InPath));
}

bool UFileFunctionsCorv::deleteDirectory(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().DeleteDirectory(*getCleanDirectory(InDirectoryType, InFilePath));
}

bool UFileFunctionsCorv::deleteFile(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().DeleteFile(*getCleanDirectory(InDirectoryType, InFilePath));
}

int64 UFileFunctionsCorv::fileSize(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().FileSize(*getCleanDirectory(InDirectoryType, InFilePath));
}

bool UFileFunctionsCorv::moveFile(EFileFunctionsCorvDirectoryType InDirectoryTypeTo, FString InFilePathTo,
	EFileFunctionsCorvDirectoryType InDirectoryTypeFrom, FString InFilePathFrom)
{
	const FString To = getCleanDirectory(InDirectoryTypeTo, InFilePathTo);
	if (FPaths::FileExists(To) || FPaths::DirectoryExists(To))
	{
		return false; // some systems' own move would replace it
	}
	return CorvaneFileFunctions::files().MoveFile(*To, *getCleanDirectory(InDirectoryTypeFrom, InFilePathFrom));
}

bool UFileFunctionsCorv::isReadOnly(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().IsReadOnly(*getCleanDirectory(InDirectoryType, InFilePath));
}

bool UFileFunctionsCorv::setReadOnly(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, bool InNewReadOnlyValue)
{
	return CorvaneFileFunctions::files().SetReadOnly(*getCleanDirectory(InDirectoryType, InFilePath), InNewReadOnlyValue);
}

FDateTime UFileFunctionsCorv::getTimeStamp(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().GetTimeStamp(*getCleanDirectory(InDirectoryType, InFilePath));
}

FDateTime UFileFunctionsCorv::getAccessTimeStamp(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().GetAccessTimeStamp(*getCleanDirectory(InDirectoryType, InFilePath));
}

void UFileFunctionsCorv::setTimeStamp(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, FDateTime InDateTime)
{
	CorvaneFileFunctions::files().SetTimeStamp(*getCleanDirectory(InDirectoryType, InFilePath), InDateTime);
}

FString UFileFunctionsCorv::getFilenameOnDisk(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	return CorvaneFileFunctions::files().GetFilenameOnDisk(*getCleanDirectory(InDirectoryType, InFilePath));
}
