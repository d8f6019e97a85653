#include "FileHandle.h"

#include "NativePath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	constexpr int always = O_CLOEXEC | O_NONBLOCK; // a pipe without another end must not make the caller wait
	constexpr mode_t newFileMode = 0666; // less the user's mask
	/** The kernel answers larger writes with larger pieces of fresh memory, and copying into those can take several times as long. */
	constexpr size_t mostPerWrite = 128 << 10;

	struct stat statusOf(int Descriptor)
	{
		struct stat Status = {};
		fstat(Descriptor, &Status);
		return Status;
	}

	/** A file has one writer. Where files cannot be locked, there is nobody to ask. */
	bool isWrittenByAnother(int Descriptor)
	{
		return flock(Descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
	}

	/** Repeats a call that moves some bytes until all are moved. */
	template <class Byte, class Call>
	bool moveAll(Byte* Bytes, int64 Number, Call Move)
	{
		while (Number > 0)
		{
			const ssize_t Moved = Move(Bytes, static_cast<size_t>(Number));
			if (Moved > 0)
			{
				Bytes += Moved;
				Number -= Moved;
			}
			else if (Moved == 0 || errno != EINTR)
			{
				return false;
			}
		}
		return Number == 0;
	}
} // namespace

bool hasWriteBit(mode_t Mode)
{
	return (Mode & S_IWUSR) != 0;
}

std::unique_ptr<FFileHandle> FFileHandle::OpenToRead(const TCHAR* Filename)
{
	std::unique_ptr<FFileHandle> File(new FFileHandle(open(toNativePath(Filename).c_str(), O_RDONLY | always)));
	return File->Descriptor >= 0 && S_ISREG(statusOf(File->Descriptor).st_mode) ? std::move(File) : nullptr;
}

std::unique_ptr<FFileHandle> FFileHandle::OpenToWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead)
{
	// Emptied only once it is known to be a file that may be written to.
	const int Access = bAllowRead ? O_RDWR : O_WRONLY;
	std::unique_ptr<FFileHandle> File(new FFileHandle(open(toNativePath(Filename).c_str(), Access | O_CREAT | always, newFileMode)));
	if (File->Descriptor < 0)
	{
		return nullptr;
	}
	const struct stat Status = statusOf(File->Descriptor);
	if (S_ISCHR(Status.st_mode))
	{
		return File;
	}
	const bool bMayBeWritten = S_ISREG(Status.st_mode) && hasWriteBit(Status.st_mode) && !isWrittenByAnother(File->Descriptor);
	return bMayBeWritten && (bAppend ? File->SeekFromEnd(0) : File->Truncate(0)) ? std::move(File) : nullptr;
}

FFileHandle::~FFileHandle()
{
	Close();
}

bool FFileHandle::Close()
{
	return Descriptor < 0 || close(std::exchange(Descriptor, -1)) == 0;
}

int64 FFileHandle::Tell()
{
	return lseek(Descriptor, 0, SEEK_CUR);
}

bool FFileHandle::Seek(int64 NewPosition)
{
	HOST_CHECK(NewPosition >= 0 && NewPosition <= Size()); // on Windows the engine takes anything else for a mistake
	return lseek(Descriptor, NewPosition, SEEK_SET) >= 0;
}

bool FFileHandle::SeekFromEnd(int64 OffsetFromEnd)
{
	return lseek(Descriptor, OffsetFromEnd, SEEK_END) >= 0;
}

bool FFileHandle::Read(uint8* To, int64 Number)
{
	return moveAll(To, Number, [this](uint8* Bytes, size_t Left) { return read(Descriptor, Bytes, Left); });
}

bool FFileHandle::Write(const uint8* From, int64 Number)
{
	return moveAll(
		From, Number, [this](const uint8* Bytes, size_t Left) { return write(Descriptor, Bytes, std::min(Left, mostPerWrite)); });
}

bool FFileHandle::Flush(const bool bFullFlush)
{
	return !bFullFlush || fsync(Descriptor) == 0;
}

bool FFileHandle::Truncate(int64 NewSize)
{
	return ftruncate(Descriptor, NewSize) == 0;
}

int64 FFileHandle::Size()
{
	return statusOf(Descriptor).st_size;
}
