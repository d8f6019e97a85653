#pragma once

#include "GenericPlatform/GenericPlatformFile.h"

#include <memory>
#include <sys/types.h>

/** Whether permissions let the owner write; without it a file is read-only for everybody. */
bool hasWriteBit(mode_t Mode);

/**
 * A file opened by the system's own calls: the standard library's streams cannot be cut to a length. Only regular files
 * are read, so that no pipe makes the caller wait; devices may be written to as well.
 */
class FFileHandle final : public IFileHandle
{
public:
	/** @return null when the file cannot be opened. */
	static std::unique_ptr<FFileHandle> OpenToRead(const TCHAR* Filename);
	static std::unique_ptr<FFileHandle> OpenToWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead);

	~FFileHandle() override;
	FFileHandle(const FFileHandle&) = delete;
	FFileHandle& operator=(const FFileHandle&) = delete;

	int64 Tell() override;
	bool Seek(int64 NewPosition) override;
	bool SeekFromEnd(int64 OffsetFromEnd) override;
	bool Read(uint8* To, int64 Number) override;
	bool Write(const uint8* From, int64 Number) override;
	bool Flush(const bool bFullFlush) override;
	bool Truncate(int64 NewSize) override;
	int64 Size() override;

	/** @return false when the system reports now that it lost what was written. The handle is of no use afterwards. */
	bool Close();

private:
	explicit FFileHandle(int InDescriptor)
		: Descriptor(InDescriptor)
	{
	}

	int Descriptor; // -1 after Close
};
