#pragma once

#include "CoreTypes.h"

class FArchive;

enum EFileWrite : uint32
{
	FILEWRITE_None = 0,
	FILEWRITE_Append = 0x08 // write behind what the file holds
};

/** Opens and deletes files by name. Thread: any. */
class IFileManager
{
public:
	static IFileManager& Get();

	/**
	 * Opens a file for writing; makes it, and the directories it lies in, when missing.
	 * @return null when that fails; the caller deletes it.
	 */
	FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags = FILEWRITE_None);

	/** @return whether there was a file that is gone now; a read-only one stays. */
	bool Delete(const TCHAR* Filename);
};
