#pragma once

/**
 * No file of this process may grow beyond a size while this lives: what a full disk does to a write. Only the calls under
 * test belong in its scope, for the test program's own output may be a file.
 */
class FileSizeLimit
{
public:
	/** @param bForOneWrite  the disk has room again as soon as a write has found it full. */
	explicit FileSizeLimit(unsigned long bytes, bool bForOneWrite = false);
	~FileSizeLimit();
	FileSizeLimit(const FileSizeLimit&) = delete;
	FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
	void (*handlerBefore)(int);
	unsigned long limitBefore;
};
