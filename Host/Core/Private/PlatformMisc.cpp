#include "HAL/PlatformMisc.h"

#include "NativePath.h"

bool FPlatformMisc::GetDiskTotalAndFreeSpace(const FString& Path, uint64& TotalNumberOfBytes, uint64& NumberOfFreeBytes)
{
	std::error_code Error;
	const std::filesystem::space_info Space = std::filesystem::space(toNativePath(*Path), Error);
	if (Error)
	{
		return false;
	}
	TotalNumberOfBytes = Space.capacity;
	NumberOfFreeBytes = Space.available;
	return true;
}
