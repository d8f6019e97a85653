#include "FileArchives.h"

#include "Host/LargePages.h"

#include <algorithm>
#include <cstring>

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
