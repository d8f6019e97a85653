#include "FileArchives.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>

namespace
{
	/** A large read usually fills fresh memory; in large pages that costs a fraction of the page faults. */
	void preferLargePages(uint8* To, int64 Number)
	{
		constexpr uintptr_t pageSize = 2 << 20;
		const uintptr_t First = (reinterpret_cast<uintptr_t>(To) + pageSize - 1) / pageSize * pageSize;
		const uintptr_t End = (reinterpret_cast<uintptr_t>(To) + static_cast<uintptr_t>(Number)) / pageSize * pageSize;
		if (First < End)
		{
			madvise(reinterpret_cast<void*>(First), End - First, MADV_HUGEPAGE); // no more than a wish
		}
	}
} // namespace

FFileReader::FFileReader(std::unique_ptr<FFileHandle> InFile)
	: File(std::move(InFile))
	, Size(File->Size())
{
}

void FFileReader::Serialize(void* Value, int64 Length)
{
	if (Length > Size - Position)
	{
		SetError();
	}
	uint8* To = static_cast<uint8*>(Value);
	while (Length > 0 && !IsError())
	{
		if (!IsBuffered() && Length >= bufferSize)
		{
			preferLargePages(To, Length);
			ReadAtPosition(To, Length);
			Position += Length;
			return;
		}
		if (!IsBuffered())
		{
			Refill();
			continue;
		}
		const int64 Offset = Position - BufferStart;
		const int64 Number = std::min(Length, BufferLength - Offset);
		std::memcpy(To, Buffer.get() + Offset, static_cast<size_t>(Number));
		To += Number;
		Position += Number;
		Length -= Number;
	}
}

void FFileReader::Refill()
{
	if (!Buffer)
	{
		Buffer = std::make_unique_for_overwrite<uint8[]>(bufferSize);
	}
	BufferStart = Position;
	BufferLength = std::min(bufferSize, Size - Position);
	ReadAtPosition(Buffer.get(), BufferLength);
}

void FFileReader::ReadAtPosition(uint8* To, int64 Number)
{
	const bool bInPlace = FilePosition == Position || File->Seek(Position);
	if (!bInPlace || !File->Read(To, Number))
	{
		SetError(); // the file got shorter, or its disk is damaged
	}
	FilePosition = Position + Number;
}

void FFileReader::Seek(int64 InPosition)
{
	if (InPosition < 0 || InPosition > Size)
	{
		SetError();
		return;
	}
	Position = InPosition;
}

bool FFileReader::Close()
{
	File->Close();
	return !IsError();
}

bool FFileWriter::Close()
{
	Check(File->Close());
	return !IsError();
}

void FFileWriter::Check(bool bSucceeded)
{
	if (!bSucceeded)
	{
		SetError();
	}
}
