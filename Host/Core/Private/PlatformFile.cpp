#include "SystemFiles.h"

#include "FileHandle.h"
#include "HAL/PlatformFileManager.h"
#include "NativePath.h"

#include <unistd.h>

namespace fs = std::filesystem;

FPlatformFileManager::FPlatformFileManager()
{
	static FSystemFiles Files;
	TopmostPlatformFile = &Files;
}

FPlatformFileManager& FPlatformFileManager::Get()
{
	static FPlatformFileManager Manager;
	return Manager;
}

bool FSystemFiles::FileExists(const TCHAR* Filename)
{
	std::error_code Ignored;
	return fs::is_regular_file(toNativePath(Filename), Ignored);
}

bool FSystemFiles::DirectoryExists(const TCHAR* Directory)
{
	std::error_code Ignored;
	return fs::is_directory(toNativePath(Directory), Ignored);
}

int64 FSystemFiles::FileSize(const TCHAR* Filename)
{
	std::error_code Error;
	const uintmax_t Size = fs::file_size(toNativePath(Filename), Error);
	return Error ? -1 : static_cast<int64>(Size);
}

bool FSystemFiles::CreateDirectory(const TCHAR* Directory)
{
	std::error_code Ignored; // what counts is whether it is there
	fs::create_directory(toNativePath(Directory), Ignored);
	return DirectoryExists(Directory);
}

bool FSystemFiles::CreateDirectoryTree(const TCHAR* Directory)
{
	std::error_code Ignored;
	fs::create_directories(toNativePath(Directory), Ignored);
	return DirectoryExists(Directory);
}

bool FSystemFiles::DeleteDirectory(const TCHAR* Directory)
{
	const fs::path Path = toNativePath(Directory);
	std::error_code Error;
	const fs::file_status Status = fs::symlink_status(Path, Error); // a link to a directory is none
	return !fs::exists(Status) || (fs::is_directory(Status) && fs::remove(Path, Error));
}

bool FSystemFiles::IsReadOnly(const TCHAR* Filename)
{
	const fs::path Path = toNativePath(Filename);
	std::error_code Error;
	const fs::file_status Status = fs::status(Path, Error);
	return fs::is_regular_file(Status) && (!hasWriteBit(static_cast<mode_t>(Status.permissions())) || access(Path.c_str(), W_OK) != 0);
}

bool FSystemFiles::SetReadOnly(const TCHAR* Filename, bool bNewReadOnlyValue)
{
	// The owner's permission alone: taken from group and others it could not be given back.
	std::error_code Error;
	if (FileExists(Filename))
	{
		fs::permissions(
			toNativePath(Filename), fs::perms::owner_write, bNewReadOnlyValue ? fs::perm_options::remove : fs::perm_options::add, Error);
	}
	return FileExists(Filename) && !Error;
}

FString FSystemFiles::GetFilenameOnDisk(const TCHAR* Filename)
{
	return Filename;
}

IFileHandle* FSystemFiles::OpenRead(const TCHAR* Filename, bool)
{
	return FFileHandle::OpenToRead(Filename).release();
}

IFileHandle* FSystemFiles::OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead)
{
	return FFileHandle::OpenToWrite(Filename, bAppend, bAllowRead).release();
}
