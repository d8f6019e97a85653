#pragma once

#include "Containers/UnrealString.h"

struct FPlatformMisc
{
	/**
	 * Looks at the disk that a file or folder lies on.
	 * @param NumberOfFreeBytes  gets what this user may still write.
	 * @return false when there is nothing of that name; the numbers are not touched then.
	 * @note Thread: any.
	 */
	static bool GetDiskTotalAndFreeSpace(const FString& Path, uint64& TotalNumberOfBytes, uint64& NumberOfFreeBytes);
};
