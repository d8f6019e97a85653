#include "GenericPlatform/GenericPlatformFile.h"
#include "NativePath.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace
{
	namespace fs = std::filesystem;

	/** Copies bytes and permissions to a file that must not exist yet. */
	bool copyToNew(const fs::path& To, const fs::path& From)
	{
		std::error_code Error;
		if (!fs::is_regular_file(From, Error) || fs::exists(fs::symlink_status(To, Error)))
		{
			return false;
		}
		if (fs::copy_file(From, To, Error))
		{
			return true;
		}
		if (Error != std::errc::file_exists) // else somebody else has made it meanwhile
		{
			fs::remove(To, Error);
		}
		return false;
	}

	/** For disks that differ, and for file systems that cannot refuse to replace. */
	bool moveByCopy(const fs::path& To, const fs::path& From)
	{
		if (!copyToNew(To, From))
		{
			return false;
		}
		std::error_code Error;
		fs::last_write_time(To, fs::last_write_time(From, Error), Error);
		fs::remove(From, Error);
		if (Error)
		{
			std::error_code Ignored;
			fs::remove(To, Ignored);
		}
		return !Error;
	}
} // namespace

bool IPlatformFile::DeleteFile(const TCHAR* Filename)
{
	std::error_code Error;
	return FileExists(Filename) && !IsReadOnly(Filename) && fs::remove(toNativePath(Filename), Error);
}

bool IPlatformFile::MoveFile(const TCHAR* To, const TCHAR* From)
{
	const fs::path Target = toNativePath(To);
	const fs::path Source = toNativePath(From);
	if (renameat2(AT_FDCWD, Source.c_str(), AT_FDCWD, Target.c_str(), RENAME_NOREPLACE) == 0)
	{
		return true;
	}
	return (errno == EXDEV || errno == EINVAL || errno == ENOSYS) && moveByCopy(Target, Source);
}

bool IPlatformFile::CopyFile(const TCHAR* To, const TCHAR* From)
{
	return copyToNew(toNativePath(To), toNativePath(From)) && SetReadOnly(To, false);
}
