#include "SystemFiles.h"

#include "FileHandle.h"
#include "NativePath.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace
{
	namespace fs = std::filesystem;

	/** What comes of the writes does not count: the engine does not ask either. */
	void copyAll(IFileHandle& To, IFileHandle& From)
	{
		constexpr int64 pieceSize = 128 << 10;
		const auto Piece = std::make_unique_for_overwrite<uint8[]>(pieceSize);
		bool bGoesOn = true;
		for (int64 Left = From.Size(); Left > 0 && bGoesOn; Left -= pieceSize)
		{
			const int64 Number = std::min(Left, pieceSize);
			bGoesOn = From.Read(Piece.get(), Number) && To.Write(Piece.get(), Number);
		}
	}

	/** For disks that differ. The target is replaced once all bytes are there. */
	bool moveByCopy(const fs::path& To, const fs::path& From)
	{
		const fs::path Copy = To.native() + ".moving";
		std::error_code Error;
		if (fs::is_regular_file(From, Error) && fs::copy_file(From, Copy, Error))
		{
			fs::last_write_time(Copy, fs::last_write_time(From, Error), Error);
			fs::rename(Copy, To, Error);
			if (!Error && fs::remove(From, Error))
			{
				return true;
			}
		}
		if (Error != std::errc::file_exists) // else the name belongs to somebody
		{
			fs::remove(Copy, Error);
		}
		return false;
	}
} // namespace

bool FSystemFiles::DeleteFile(const TCHAR* Filename)
{
	std::error_code Error;
	return FileExists(Filename) && !IsReadOnly(Filename) && fs::remove(toNativePath(Filename), Error);
}

bool FSystemFiles::MoveFile(const TCHAR* To, const TCHAR* From)
{
	const fs::path Target = toNativePath(To);
	const fs::path Source = toNativePath(From);
	return std::rename(Source.c_str(), Target.c_str()) == 0 || (errno == EXDEV && moveByCopy(Target, Source));
}

bool FSystemFiles::CopyFile(const TCHAR* To, const TCHAR* From)
{
	std::error_code Error;
	const std::unique_ptr<FFileHandle> Source = FFileHandle::OpenToRead(From);
	if (!Source || fs::exists(fs::symlink_status(toNativePath(To), Error)))
	{
		return false;
	}
	const std::unique_ptr<FFileHandle> Target = FFileHandle::OpenToWrite(To, false, false);
	if (Target)
	{
		copyAll(*Target, *Source);
	}
	return Target != nullptr;
}
