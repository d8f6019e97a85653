#pragma once

#include "Containers/UnrealString.h"

class FArchive;

enum EFileWrite : uint32
{
	FILEWRITE_None = 0,
	FILEWRITE_Append = 0x08, // write after what the file holds
	FILEWRITE_AllowRead = 0x10 // others may read meanwhile; here they always may
};

/** Opens and deletes files by name. Thread: any. */
class IFileManager
{
public:
	static IFileManager& Get();

	/** @return null when that is no file that can be read; the caller deletes it. */
	FArchive* CreateFileReader(const TCHAR* Filename, uint32 ReadFlags = 0);

	/**
	 * Opens a file for writing; makes it, and the directories it lies in, when missing.
	 * @return null when that fails; the caller deletes it.
	 */
	FArchive* CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags = FILEWRITE_None);

	/** @return bytes, or -1 when that is no file. */
	int64 FileSize(const TCHAR* Filename);

	/**
	 * Finds the files in a directory, not those further down.
	 * @param FoundFiles  gets their names, without the directory, in any order.
	 * @param FileExtension  with or without its dot; null or empty = any.
	 */
	void FindFiles(TArray<FString>& FoundFiles, const TCHAR* Directory, const TCHAR* FileExtension);

	/**
	 * Deletes a file.
	 * @param bRequireExists  fail when there is none.
	 * @param bEvenReadOnly  delete a read-only one as well.
	 * @param bQuiet  of no use here: nothing is logged.
	 * @return whether there is no such file now.
	 */
	bool Delete(const TCHAR* Filename, bool bRequireExists = false, bool bEvenReadOnly = false, bool bQuiet = false);
};
