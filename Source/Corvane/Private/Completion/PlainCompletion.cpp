#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/EventBody.h"
#include "Rules/UploadTail.h"

namespace CorvanePlainCompletion
{
	/** Whether such an answer asks for the body once more, elsewhere. */
	static bool sendsOn(int32 Code, const FhttpRequest& Record)
	{
		switch (Code)
		{
		case 301:
		case 302:
			return Record.requestType != EHTTPCorvRequestType::POST_UPLOAD && Record.verb != TEXT("POST"); // which becomes a GET
		case 307:
		case 308:
			return true;
		default:
			return false;
		}
	}
} // namespace CorvanePlainCompletion

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
		const int32 Code = codeOf(InResponse);
		if (uploadSize > 0 && CorvanePlainCompletion::sendsOn(Code, httpRequest))
		{
			UE_LOG(LogTemp, Warning,
				TEXT(
					"UCorvaneBPLibrary: The server sent the upload on to another address (%d), but a body is sent once only. Name the final address. %s"),
				Code, *requestID);
		}
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
