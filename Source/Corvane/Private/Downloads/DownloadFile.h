#pragma once

#include "CoreMinimal.h"
#include "Interfaces/IHttpResponse.h"
#include "Rules/DownloadRules.h"

/** What both kinds of downloads read from answers and do to files. Thread: request worker. */
namespace CorvaneDownload
{
	/** @return bytes, 0 when there is no file. */
	int64 sizeOnDisk(const FString& path);

	/** What decides about the body of an answer. */
	FCorvDownloadAnswer readAnswer(const IHttpResponse& response, int32 statusCode);

	/**
	 * Puts bytes behind those of a file, or in their place.
	 * @return false, with a line in the log, when not every byte reached the disk; what did stays there.
	 */
	bool write(const FString& path, const TArray<uint8>& bytes, bool bReplace);
} // namespace CorvaneDownload
