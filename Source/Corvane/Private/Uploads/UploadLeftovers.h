#pragma once

#include "CoreMinimal.h"

/** What uploads that never ended have left on disk. Paths are full. Thread: any. */
namespace CorvaneUpload
{
	/** @return the size that a file had before its upload; -1 when it shows no trace of one or cannot be read. */
	int64 sizeBeforeUpload(const FString& path);

	/** Whether a file is longer than its content by the tail of an upload, be that one running, also elsewhere, or long dead. */
	bool endsInOwnTail(const FString& path);
} // namespace CorvaneUpload
