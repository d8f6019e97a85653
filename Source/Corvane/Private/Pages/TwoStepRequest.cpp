#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/CorvTheadJob.h"
#include "Completion/FollowUp.h"
#include "Rules/PageReading.h"

// A page is fetched first, and the address that it leads to second; the second request is one of its own.

namespace CorvaneTwoStepRequest
{
	/** What is larger is no page but the file itself, which may be too large to be read as text. */
	constexpr int32 mostBytesOfPage = 4 << 20;
} // namespace CorvaneTwoStepRequest

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

bool UCorvaneRequestCompleteObject::findSecondStep(const IHttpResponse& InResponse, FString& OutUrl)
{
	const int32 Size = InResponse.GetContent().Num();
	if (multiStepDownload != 1 || Size == 0 || Size > CorvaneTwoStepRequest::mostBytesOfPage)
	{
		return false;
	}
	OutUrl = generateURLFromHTML(InResponse.GetContentAsString(), httpRequest.url);
	return !OutUrl.EndsWith(TEXT("confirm=")); // without a token the answer is the file itself
}

void UCorvaneRequestCompleteObject::requestMultiStepComplete(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return;
	}
	addJob(new FCorvTheadJob{ECorvJobType::MultiStepComplete, InRequest, InResponse, bInWasSuccessful});
}

void UCorvaneRequestCompleteObject::requestMultiStepCompleteInternal(
	FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	FString Url;
	if (!bInWasSuccessful || !InResponse.IsValid())
	{
		deliver(InRequest, failureOf(InResponse));
	}
	else if (findSecondStep(*InResponse, Url))
	{
		startSecondStep(Url);
	}
	else
	{
		deliver(InRequest, CorvaneResult::success(*InResponse, InResponse->GetContent()));
	}
}

void UCorvaneRequestCompleteObject::startSecondStep(const FString& InUrl)
{
	FCorvFollowUp FollowUp;
	FollowUp.requestID = requestID;
	FollowUp.url = httpRequest.url;
	FollowUp.cancelState = cancelState;
	FollowUp.node = node;
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
