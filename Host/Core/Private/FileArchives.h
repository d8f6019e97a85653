#pragma once

#include "FileHandle.h"
#include "Serialization/Archive.h"

/** Reads a file of the size it had when it was opened; small reads come out of a buffer. */
class FFileReader final : public FArchive
{
public:
	/** @param InFile  not null. */
	explicit FFileReader(std::unique_ptr<FFileHandle> InFile);

	void Serialize(void* Value, int64 Length) override;
	int64 TotalSize() override { return Size; }
	void Seek(int64 InPosition) override;
	int64 Tell() override { return Position; }
	bool Close() override;

private:
	static constexpr int64 bufferSize = 64 * 1024;

	bool IsBuffered() const { return Position >= BufferStart && Position < BufferStart + BufferLength; }
	/** Fills the buffer from the position on, as far as the file goes. */
	void Refill();
	void ReadAtPosition(uint8* To, int64 Number);

	std::unique_ptr<FFileHandle> File;
	const int64 Size;
	int64 Position = 0;
	int64 FilePosition = 0; // where the system would read on
	std::unique_ptr<uint8[]> Buffer;
	int64 BufferStart = 0; // the place in the file of the buffer's first byte
	int64 BufferLength = 0;
};

/** Hands every write to the system at once, so that a full disk shows at the write that found it. */
class FFileWriter final : public FArchive
{
public:
	/** @param InFile  not null. */
	explicit FFileWriter(std::unique_ptr<FFileHandle> InFile)
		: File(std::move(InFile))
	{
	}

	void Serialize(void* Value, int64 Length) override { Check(File->Write(static_cast<const uint8*>(Value), Length)); }
	int64 TotalSize() override { return File->Size(); }
	void Seek(int64 Position) override { Check(File->Seek(Position)); }
	int64 Tell() override { return File->Tell(); }
	bool Close() override;

private:
	void Check(bool bSucceeded);

	std::unique_ptr<FFileHandle> File;
};
