#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/EventBody.h"
#include "Rules/UploadTail.h"

void UCorvaneRequestCompleteObject::requestCompleteInternal(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return;
	}
	if (CorvaneRules::needsRepair(httpRequest)) // before anything else, and whatever the outcome
	{
		corvaneBPLibrary->addRequestToTruncateThread(httpRequest);
	}
	if (multiStepDownloadType == EMultiStepType::E_GOOGLE_DRIVE_FILE_INFO)
	{
		completeFileInfo(InRequest, InResponse, bInWasSuccessful);
	}
	else if (!fileCancelResumeDownloadDir.IsEmpty())
	{
		completeDownload(InRequest, InResponse, bInWasSuccessful);
	}
	else if (!bInWasSuccessful || !InResponse.IsValid())
	{
		deliver(InRequest, failureOf(InResponse));
	}
	else if (httpRequest.bindServerSendEvent)
	{
		deliver(InRequest, CorvaneResult::success(*InResponse, eventBody->take()));
	}
	else
	{
		deliver(InRequest, CorvaneResult::success(*InResponse, InResponse->GetContent()));
	}
}

void UCorvaneRequestCompleteObject::deliver(const FHttpRequestPtr& InRequest, FCorvCompletion InResult)
{
	InResult.requestID = requestID;
	completionPosted = true;
	CorvaneDelivery::completion(corvaneBPLibrary, node, InRequest, MoveTemp(InResult));
}
