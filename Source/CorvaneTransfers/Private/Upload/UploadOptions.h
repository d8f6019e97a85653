#pragma once

#include "CoreMinimal.h"
#include "CorvaneUploadOptions.h"
#include "Upload/UploadContent.h"

namespace CorvaneUploadOptions
{
	/**
	 * Looks at what an upload is started with, and at nothing else. Thread: any.
	 * @param bHashIsReadable  whether Options.Hash is.
	 * @return what is wrong, as a sentence; empty = nothing.
	 */
	FString FindFault(const FCorvaneUploadContent& Content, const FCorvaneUploadOptions& Options, bool bHashIsReadable);

	/** @return the verb in capitals, as options or content name it. */
	FString VerbOf(const FCorvaneUploadContent& Content, const FCorvaneUploadOptions& Options);
} // namespace CorvaneUploadOptions
