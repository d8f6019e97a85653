#pragma once

#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"

namespace CorvaneDownload
{
	/**
	 * Looks at what a download is started with, and at nothing else. Thread: any.
	 * @param bHashIsReadable  whether Options.Hash is.
	 * @return what is wrong, as a sentence; empty = nothing.
	 */
	FString FindFault(const FString& URL, const FString& Target, const FCorvaneDownloadOptions& Options, bool bHashIsReadable);
} // namespace CorvaneDownload
