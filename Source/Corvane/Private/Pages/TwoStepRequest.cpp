#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/CorvThread.h"
#include "Completion/FollowUp.h"
#include "Misc/ScopeLock.h"
#include "Rules/PageReading.h"

// A page is fetched first, and the address that it leads to second; the second request is one of its own.

FString UCorvaneRequestCompleteObject::generateURLFromHTML(FString InHtml, FString InUrl)
{
	if (HTMLFileSize == 0)
	{
		HTMLFileSize = CorvaneRules::shownSize(InHtml);
	}
	if (multiStepDownloadType == EMultiStepType::E_ANONFILES_PAGE)
	{
		return CorvaneRules::downloadLink(InHtml);
	}
	return InUrl + TEXT("&confirm=") + CorvaneRules::confirmationToken(InHtml);
}

bool UCorvaneRequestCompleteObject::findSecondStep(const FHttpResponsePtr& InResponse, FString& OutUrl)
{
	if (!InResponse.IsValid() || multiStepDownload != 1 || InResponse->GetContent().IsEmpty())
	{
		return false;
	}
	OutUrl = generateURLFromHTML(InResponse->GetContentAsString(), httpRequest.url);
	return !OutUrl.EndsWith(TEXT("confirm=")); // without a token the answer is the file itself
}

void UCorvaneRequestCompleteObject::requestMultiStepComplete(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	const FHttpResponsePtr Answer = bInWasSuccessful ? InResponse : nullptr;
	FString Url;
	FCorvCompletion Result;
	const bool bGoesOn = corvaneBPLibrary && findSecondStep(Answer, Url);
	if (corvaneBPLibrary && !bGoesOn)
	{
		Result = Answer.IsValid() ? CorvaneResult::success(*Answer, Answer->GetContent()) : failureOf(InResponse);
	}
	// The work is done here, so the last job has none. A handler may start the record again at once: it waits until the job is queued.
	FScopeLock Lock(&workerLock);
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
	}
	else if (bGoesOn)
	{
		startSecondStep(Url);
	}
	else
	{
		deliver(InRequest, MoveTemp(Result));
	}
	if (corvThread) // behind what has been queued before: it is still to be told
	{
		corvThread->addJob(new FCorvTheadJob{ECorvJobType::EndOfStep, InRequest, InResponse, bInWasSuccessful});
	}
}

void UCorvaneRequestCompleteObject::startSecondStep(const FString& InUrl)
{
	FCorvFollowUp FollowUp;
	FollowUp.requestID = requestID;
	FollowUp.cancelState = cancelState;
	FollowUp.build = [Url = InUrl, ID = requestID, DownloadID = downloadID, FileSize = HTMLFileSize]
	{
		constexpr int32 secondStep = 2;
		TArray<FhttpRequest> Requests;
		FString RequestID;
		UCorvaneBPLibrary::CreateHttpRequestGET({}, Url, {}, ID, false, Requests, RequestID);
		if (!Requests.IsEmpty())
		{
			UCorvaneRequestCompleteObject* Object = Requests[0].requestCompleteObject();
			Object->setDownloadID(DownloadID);
			Object->setHTMLFileSize(FileSize);
			Object->setMultiStepDownload(secondStep);
		}
		return Requests;
	};
	completionPosted = true;
	CorvaneFollowUp::start(corvaneBPLibrary, MoveTemp(FollowUp));
}
