#pragma once

#include "FileFunctionsCorv.h"

#include <string>
#include <string_view>

using EKind = EFileFunctionsCorvDirectoryType;

TArray<uint8> toArray(std::string_view bytes);
std::string toBytes(const TArray<uint8>& array);

/** @return what a shell command prints; a command that fails, fails the test. */
std::string outputOf(const std::string& command);

/**
 * No file of this process may grow beyond a size while this lives: what a full disk does to a write. Only the calls under
 * test belong in its scope, for the test program's own output may be a file.
 */
class FileSizeLimit
{
public:
	explicit FileSizeLimit(unsigned long bytes);
	~FileSizeLimit();
	FileSizeLimit(const FileSizeLimit&) = delete;
	FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
	unsigned long limitBefore;
	void (*handlerBefore)(int);
};
