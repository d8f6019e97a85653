#include "FileFunctionsCorv.h"

#include "Misc/Paths.h"

FString UFileFunctionsCorv::getCleanDirectory(EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath)
{
	if (InDirectoryType == EFileFunctionsCorvDirectoryType::E_ad)
	{
		return FPaths::ConvertRelativePathToFull(InFilePath);
	}
	return FPaths::ConvertRelativePathToFull(FPaths::ProjectDir() + InFilePath);
}
