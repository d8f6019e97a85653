#pragma once

#include "CoreMinimal.h"
#include "GenericPlatform/GenericPlatformFile.h"

/** A file that is open for writing, which keeps others from it. Thread: any. */
namespace CorvaneHeldFile
{
	/** Deletes a file and lets go of it. @param Handle  of this file; empty afterwards. */
	void Delete(TUniquePtr<IFileHandle>& Handle, const FString& Path);
} // namespace CorvaneHeldFile
