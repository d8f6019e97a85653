#pragma once

#include "CoreMinimal.h"
#include "Files/FileHash.h"
#include "Files/Journal.h"

#include <atomic>

/** Reading of files that somebody may be writing to. Thread: any. */
namespace CorvaneFileBlocks
{
	/** @return false when the file does not have all these bytes, or cannot be read. */
	bool Read(const FString& File, int64 Start, int64 Count, TArray<uint8>& Bytes);

	/** @return false when the file has fewer bytes, or cannot be read. */
	bool DescribeStart(const FString& File, int64 Length, FCorvaneFileStart& Start);

	/** @return whether the file begins with these bytes, going by the last ones of them. */
	bool HasStart(const FString& File, const FCorvaneFileStart& Start);

	/** @return whether the file is this one, going by its size and its last bytes. */
	bool IsFile(const FString& File, const FCorvaneFileStart& Whole);

	/** Reads a file from end to end. @return false when it cannot be read, or bStop has become true. */
	bool HashAll(const FString& File, ECorvaneHashKind Kind, const std::atomic<bool>& bStop, FString& Hash);
} // namespace CorvaneFileBlocks
