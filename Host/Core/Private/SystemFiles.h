#pragma once

#include "GenericPlatform/GenericPlatformFile.h"

/** The files of the system. */
class FSystemFiles final : public IPlatformFile
{
public:
	bool FileExists(const TCHAR* Filename) override;
	bool DirectoryExists(const TCHAR* Directory) override;
	int64 FileSize(const TCHAR* Filename) override;
	bool DeleteFile(const TCHAR* Filename) override;
	bool MoveFile(const TCHAR* To, const TCHAR* From) override;
	bool CopyFile(const TCHAR* To, const TCHAR* From) override;
	bool CreateDirectory(const TCHAR* Directory) override;
	bool CreateDirectoryTree(const TCHAR* Directory) override;
	bool DeleteDirectory(const TCHAR* Directory) override;
	bool IsReadOnly(const TCHAR* Filename) override;
	bool SetReadOnly(const TCHAR* Filename, bool bNewReadOnlyValue) override;
	FDateTime GetTimeStamp(const TCHAR* Filename) override;
	FDateTime GetAccessTimeStamp(const TCHAR* Filename) override;
	void SetTimeStamp(const TCHAR* Filename, FDateTime DateTime) override;
	FString GetFilenameOnDisk(const TCHAR* Filename) override;
	IFileHandle* OpenRead(const TCHAR* Filename, bool bAllowWrite) override;
	IFileHandle* OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead) override;
};
