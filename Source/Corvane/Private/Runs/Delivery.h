#pragma once

#include "CorvaneBPLibrary.h"
#include "Runs/ProgressMail.h"
#include "Templates/SharedPointer.h"

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
	 * Hands a result to its node, if that still waits, or else broadcasts it.
	 * @param node  that of the request from its beginning on, whatever node has the ID by now.
	 */
	void completion(UCorvaneBPLibrary* library, TWeakObjectPtr<UAsyncNodeCorv> node, FCorvCompletion result);

	/** The same for the information about a Drive file; a node of another kind gets nothing. */
	void fileInfo(UCorvaneBPLibrary* library, TWeakObjectPtr<UAsyncNodeCorv> node, FCorvFileInfoResult result);

	/** @param broadcast  raises the event; it replaces one of the same mail that still waits for the game thread. */
	void progress(UCorvaneBPLibrary* library, TSharedPtr<FCorvProgressMail> mail, FCorvProgressMail::FBroadcast broadcast);

	void serverSendEvent(UCorvaneBPLibrary* library, FString response, const FString& requestID);
} // namespace CorvaneDelivery
