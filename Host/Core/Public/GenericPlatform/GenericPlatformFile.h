#pragma once

#include "Containers/UnrealString.h"
#include "Misc/DateTime.h"

/** An open file; deleting it closes it. Positions and sizes are bytes. Thread: one at a time. */
class IFileHandle
{
public:
	virtual ~IFileHandle() = default;
	virtual int64 Tell() = 0;
	/** Moves to a position from the start; a negative one fails. */
	virtual bool Seek(int64 NewPosition) = 0;
	/** @param OffsetFromEnd  zero or negative. */
	virtual bool SeekFromEnd(int64 OffsetFromEnd = 0) = 0;
	/** @return false when fewer bytes were left or reading failed. */
	virtual bool Read(uint8* To, int64 Number) = 0;
	/** @return false when not every byte was taken. */
	virtual bool Write(const uint8* From, int64 Number) = 0;
	/** @param bFullFlush  wait until the disk has the bytes; otherwise they are with the system already. */
	virtual bool Flush(const bool bFullFlush = false) = 0;
	/** Cuts or lengthens the file; the position stays. */
	virtual bool Truncate(int64 NewSize) = 0;
	virtual int64 Size() = 0;
};

/**
 * The file system. Every function reports failure by its result. A file without write permission for its owner is
 * read-only for everybody, also for a user who may do anything. What derives from it may stand before another one and pass
 * on what it is asked. Thread: any.
 */
class IPlatformFile
{
public:
	virtual ~IPlatformFile() = default;

	/** @return true for a file, false for a directory and for nothing. */
	virtual bool FileExists(const TCHAR* Filename) = 0;
	virtual bool DirectoryExists(const TCHAR* Directory) = 0;
	/** @return bytes, or -1 when that is no file. */
	virtual int64 FileSize(const TCHAR* Filename) = 0;

	/** @return whether there was a file that is gone now; a read-only one stays. */
	virtual bool DeleteFile(const TCHAR* Filename) = 0;
	/** Replaces a target. */
	virtual bool MoveFile(const TCHAR* To, const TCHAR* From) = 0;
	/**
	 * Fails when the target exists or cannot be made. A copy that a full disk has cut short counts as made: whoever needs all
	 * of it compares the sizes. The copy can be written to.
	 */
	virtual bool CopyFile(const TCHAR* To, const TCHAR* From) = 0;

	/** Makes one level. @return whether the directory is there now. */
	virtual bool CreateDirectory(const TCHAR* Directory) = 0;
	/** Makes all levels that are missing. @return whether the directory is there now. */
	virtual bool CreateDirectoryTree(const TCHAR* Directory) = 0;
	/** Removes an empty directory. @return whether there is none of that name now. */
	virtual bool DeleteDirectory(const TCHAR* Directory) = 0;

	/** @return false also when that is no file. */
	virtual bool IsReadOnly(const TCHAR* Filename) = 0;
	virtual bool SetReadOnly(const TCHAR* Filename, bool bNewReadOnlyValue) = 0;

	/** Times are UTC; FDateTime::MinValue() when there is nothing of that name. */
	virtual FDateTime GetTimeStamp(const TCHAR* Filename) = 0;
	virtual FDateTime GetAccessTimeStamp(const TCHAR* Filename) = 0;
	/** Sets the time of the last change; the time of the last access stays. */
	virtual void SetTimeStamp(const TCHAR* Filename, FDateTime DateTime) = 0;

	/** @return the name as given: case matters in the file systems of this host. */
	virtual FString GetFilenameOnDisk(const TCHAR* Filename) = 0;

	/** @return null when that is no file that can be read; the caller deletes it. */
	virtual IFileHandle* OpenRead(const TCHAR* Filename, bool bAllowWrite = false) = 0;
	/**
	 * Opens a file at its end, or makes it or empties it, for this handle alone: until it goes, nobody else who asks this way
	 * can write to the file, in this program or in another. Missing directories are not made.
	 * @param bAppend  keep the content, start after it.
	 * @param bAllowRead  the handle can be read from as well.
	 * @return null when that fails; the caller deletes it.
	 */
	virtual IFileHandle* OpenWrite(const TCHAR* Filename, bool bAppend = false, bool bAllowRead = false) = 0;
};
