#pragma once

#include "GenericPlatform/GenericPlatformFile.h"

/** Hands out the file system. Thread: any. */
class FPlatformFileManager
{
public:
	static FPlatformFileManager& Get();
	IPlatformFile& GetPlatformFile() { return *TopmostPlatformFile; }
	/** Puts another file system in front; it must outlive its use. Thread: while no other one works with files. */
	void SetPlatformFile(IPlatformFile& NewTopmostPlatformFile) { TopmostPlatformFile = &NewTopmostPlatformFile; }

private:
	FPlatformFileManager();

	IPlatformFile* TopmostPlatformFile;
};
