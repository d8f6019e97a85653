#pragma once

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

/** Stands before the file system as long as it lives, and passes everything on. */
class ForwardingFiles : public IPlatformFile
{
public:
	ForwardingFiles() { FPlatformFileManager::Get().SetPlatformFile(*this); }
	~ForwardingFiles() override { FPlatformFileManager::Get().SetPlatformFile(Lower); }

	bool FileExists(const TCHAR* Filename) override { return Lower.FileExists(Filename); }
	bool DirectoryExists(const TCHAR* Directory) override { return Lower.DirectoryExists(Directory); }
	int64 FileSize(const TCHAR* Filename) override { return Lower.FileSize(Filename); }
	bool DeleteFile(const TCHAR* Filename) override { return Lower.DeleteFile(Filename); }
	bool MoveFile(const TCHAR* To, const TCHAR* From) override { return Lower.MoveFile(To, From); }
	bool CopyFile(const TCHAR* To, const TCHAR* From) override { return Lower.CopyFile(To, From); }
	bool CreateDirectory(const TCHAR* Directory) override { return Lower.CreateDirectory(Directory); }
	bool CreateDirectoryTree(const TCHAR* Directory) override { return Lower.CreateDirectoryTree(Directory); }
	bool DeleteDirectory(const TCHAR* Directory) override { return Lower.DeleteDirectory(Directory); }
	bool IsReadOnly(const TCHAR* Filename) override { return Lower.IsReadOnly(Filename); }
	bool SetReadOnly(const TCHAR* Filename, bool bReadOnly) override { return Lower.SetReadOnly(Filename, bReadOnly); }
	FDateTime GetTimeStamp(const TCHAR* Filename) override { return Lower.GetTimeStamp(Filename); }
	FDateTime GetAccessTimeStamp(const TCHAR* Filename) override { return Lower.GetAccessTimeStamp(Filename); }
	void SetTimeStamp(const TCHAR* Filename, FDateTime Time) override { Lower.SetTimeStamp(Filename, Time); }
	FString GetFilenameOnDisk(const TCHAR* Filename) override { return Lower.GetFilenameOnDisk(Filename); }
	IFileHandle* OpenRead(const TCHAR* Filename, bool bAllowWrite) override { return Lower.OpenRead(Filename, bAllowWrite); }
	IFileHandle* OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead) override
	{
		return Lower.OpenWrite(Filename, bAppend, bAllowRead);
	}

protected:
	IPlatformFile& Lower = FPlatformFileManager::Get().GetPlatformFile();
};
