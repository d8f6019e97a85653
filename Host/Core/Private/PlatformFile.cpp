#include "GenericPlatform/GenericPlatformFile.h"

#include "FileHandle.h"
#include "HAL/PlatformFileManager.h"
#include "NativePath.h"

#include <unistd.h>

namespace fs = std::filesystem;

FPlatformFileManager& FPlatformFileManager::Get()
{
	static FPlatformFileManager Manager;
	return Manager;
}

bool IPlatformFile::FileExists(const TCHAR* Filename)
{
	std::error_code Ignored;
	return fs::is_regular_file(toNativePath(Filename), Ignored);
}

bool IPlatformFile::DirectoryExists(const TCHAR* Directory)
{
	std::error_code Ignored;
	return fs::is_directory(toNativePath(Directory), Ignored);
}

int64 IPlatformFile::FileSize(const TCHAR* Filename)
{
	std::error_code Error;
	const uintmax_t Size = fs::file_size(toNativePath(Filename), Error);
	return Error ? -1 : static_cast<int64>(Size);
}

bool IPlatformFile::CreateDirectory(const TCHAR* Directory)
{
	std::error_code Ignored; // what counts is whether it is there
	fs::create_directory(toNativePath(Directory), Ignored);
	return DirectoryExists(Directory);
}

bool IPlatformFile::DeleteDirectory(const TCHAR* Directory)
{
	const fs::path Path = toNativePath(Directory);
	std::error_code Error;
	const fs::file_status Status = fs::symlink_status(Path, Error); // a link to a directory is none
	return !fs::exists(Status) || (fs::is_directory(Status) && fs::remove(Path, Error));
}

bool IPlatformFile::IsReadOnly(const TCHAR* Filename)
{
	const fs::path Path = toNativePath(Filename);
	std::error_code Error;
	const fs::file_status Status = fs::status(Path, Error);
	return fs::is_regular_file(Status) && (!hasWriteBit(static_cast<mode_t>(Status.permissions())) || access(Path.c_str(), W_OK) != 0);
}

bool IPlatformFile::SetReadOnly(const TCHAR* Filename, bool bNewReadOnlyValue)
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

FString IPlatformFile::GetFilenameOnDisk(const TCHAR* Filename)
{
	return Filename;
}

IFileHandle* IPlatformFile::OpenRead(const TCHAR* Filename, bool)
{
	return FFileHandle::OpenToRead(Filename).release();
}

IFileHandle* IPlatformFile::OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead)
{
	return FFileHandle::OpenToWrite(Filename, bAppend, bAllowRead).release();
}
