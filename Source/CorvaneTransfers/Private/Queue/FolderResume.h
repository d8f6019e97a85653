#pragma once

#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "Queue/QueueRun.h"
#include "Templates/SharedPointer.h"

/** Downloads that earlier runs have left in a folder. */
namespace CorvaneFolderResume
{
	/**
	 * Reads the journals on a background thread, then starts what they tell of.
	 * @param Queue  that Options name; it expects more until then.
	 * @param OnlyOrigin  empty = any. Thread: game thread.
	 */
	void Start(const TSharedRef<FCorvaneQueueRun>& Queue, const FString& Folder, const FCorvaneDownloadOptions& Options,
		const FString& OnlyOrigin);
} // namespace CorvaneFolderResume
