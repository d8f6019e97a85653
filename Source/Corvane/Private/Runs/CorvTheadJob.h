#pragma once

#include "CoreMinimal.h"
#include "Interfaces/IHttpRequest.h"

/** What a job calls. */
enum class ECorvJobType : int32
{
	Complete = 0,
	CompleteLowRam = 1,
	MultiStepDownload = 2,
	ProgressUpload = 3,
	ProgressDownload = 4,
	ProgressServerSendEvent = 5,
	ProgressDownloadLowRam = 6,
	MultiStepComplete = 7
};

/**
 * One callback on its way to the request worker; its pointers keep request and response alive until it has run. Progress
 * is numbers only.
 */
struct FCorvTheadJob
{
	bool isLast() const
	{
		return jobType == ECorvJobType::Complete || jobType == ECorvJobType::CompleteLowRam || jobType == ECorvJobType::MultiStepComplete;
	}

	ECorvJobType jobType;
	FHttpRequestPtr request;
	// completion
	FHttpResponsePtr response;
	bool bWasSuccessful = false;
	// progress
	uint64 bytesSent = 0;
	uint64 bytesReceived = 0;
	bool bEndFollows = false; // the body is complete: the completion is right behind, and the worker may wait for it
};
