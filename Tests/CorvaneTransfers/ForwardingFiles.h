#pragma once

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

#include <memory>

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

/** What asks the handle of such a layer for everything. */
class ForwardingHandle : public IFileHandle
{
public:
	explicit ForwardingHandle(IFileHandle* InLower)
		: Lower(InLower)
	{
	}

	int64 Tell() override { return Lower->Tell(); }
	bool Seek(int64 NewPosition) override { return Lower->Seek(NewPosition); }
	bool SeekFromEnd(int64 Offset) override { return Lower->SeekFromEnd(Offset); }
	bool Read(uint8* To, int64 Number) override { return Lower->Read(To, Number); }
	int64 Size() override { return Lower->Size(); }
	bool Write(const uint8* From, int64 Number) override { return Lower->Write(From, Number); }
	bool Truncate(int64 NewSize) override { return Lower->Truncate(NewSize); }
	bool Flush(const bool bFullFlush) override { return Lower->Flush(bFullFlush); }

protected:
	const std::unique_ptr<IFileHandle> Lower;
};
