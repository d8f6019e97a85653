#pragma once

#include "CorvaneBPLibrary.h"

/** The result of one request, as its receiver gets it. */
struct FCorvCompletion
{
	FString dataString;
	TArray<FString> dataArray;
	TArray<FString> header;
	int32 statusCode = 0;
	TArray<uint8> byteData;
	FString requestID;
};

/** What the view page of a Drive file has told, as its receiver gets it. */
struct FCorvFileInfoResult
{
	FString fileName;
	int64 fileSizeInBytes = 0;
	int32 statusCode = 0;
	FString downloadID;
	FString requestID;
};

/**
 * The one way from workers to scripts: each function posts a game-thread task that owns its data. A task whose library is
 * gone does nothing. Thread: any.
 */
namespace CorvaneDelivery
{
	/**
	 * Hands a result to the node that waits for its ID, or else broadcasts it.
	 * @param request  the engine request that ended, null when none was started.
	 */
	void completion(UCorvaneBPLibrary* library, FHttpRequestPtr request, FCorvCompletion result);

	/** The same for the information about a Drive file; a node of another kind that waits for the ID gets nothing. */
	void fileInfo(UCorvaneBPLibrary* library, FHttpRequestPtr request, FCorvFileInfoResult result);

	/** Sizes in MiB, percent 0-100, megaBit as measured. */
	void downloadProgress(
		UCorvaneBPLibrary* library, float size, float megaBytesReceived, float percentDownload, float megaBit, const FString& requestID);

	/** Size in bytes, percent 0-100. */
	void uploadProgress(UCorvaneBPLibrary* library, float size, int32 bytesSent, float percentUpload, const FString& requestID);

	void serverSendEvent(UCorvaneBPLibrary* library, FString response, const FString& requestID);

	/** Cancels an engine request from the game thread. */
	void cancel(FHttpRequestPtr request);
} // namespace CorvaneDelivery
