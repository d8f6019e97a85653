#pragma once

#include "GenericPlatform/GenericPlatformFile.h"

/** Hands out the file system. Thread: any. */
class FPlatformFileManager
{
public:
	static FPlatformFileManager& Get();
	IPlatformFile& GetPlatformFile() { return PlatformFile; }

private:
	IPlatformFile PlatformFile;
};
