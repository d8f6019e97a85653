#pragma once

#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "CorvaneResumableOptions.h"
#include "Queue/QueueRun.h"
#include "Templates/SharedPointer.h"

/** Transfers that earlier runs have left: their journals are read on a background thread, then they are started. Thread: game thread. */
namespace CorvaneFolderResume
{
	/**
	 * @param Queue  that Options name; it expects more until then.
	 * @param Folder  where the files were to stand.
	 * @param OnlyOrigin  empty = any.
	 */
	void Downloads(const TSharedRef<FCorvaneQueueRun>& Queue, const FString& Folder, const FCorvaneDownloadOptions& Options,
		const FString& OnlyOrigin);

	/** The same for resumable uploads, whose options name the folder. */
	void Uploads(const TSharedRef<FCorvaneQueueRun>& Queue, const FCorvaneResumableOptions& Options, const FString& OnlyOrigin);
} // namespace CorvaneFolderResume
