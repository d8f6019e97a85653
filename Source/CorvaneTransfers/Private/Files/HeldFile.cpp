#include "Files/HeldFile.h"

#include "HAL/PlatformFileManager.h"

void CorvaneHeldFile::Delete(TUniquePtr<IFileHandle>& Handle, const FString& Path)
{
	// Deleted first, so that nobody gets it in between; some systems want it closed before.
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const bool bDeleted = Files.DeleteFile(*Path);
	Handle.Reset();
	if (!bDeleted)
	{
		Files.DeleteFile(*Path);
	}
}
