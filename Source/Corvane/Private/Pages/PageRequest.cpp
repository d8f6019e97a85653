#include "Pages/PageRequest.h"

#include "CorvaneRequestCompleteObject.h"
#include "Rules/PageReading.h"
#include "Rules/ShownAddress.h"
#include "Rules/StatusCodes.h"
#include "Runs/Result.h"
#include "Runs/Run.h"

namespace CorvanePageRequest
{
	constexpr int32 secondStep = 2;

	/** What is larger is no page but the file itself, which may be too large to be read as text. */
	constexpr int32 mostBytesOfPage = 4 << 20;

	static TArray<FhttpRequest> buildSecondStep(
		const FhttpRequest& Before, const FString& Url, const FString& RequestID, const FCorvPagePlan& Plan)
	{
		TArray<FhttpRequest> Requests;
		FString ID;
		UCorvaneBPLibrary::CreateHttpRequestGET({}, Url, {}, RequestID, false, Requests, ID);
		if (!Requests.IsEmpty())
		{
			FCorvPagePlan& Next = Requests[0].requestCompleteObject()->pageRequest().plan;
			Next = Plan;
			Next.multiStepDownload = secondStep;
			Next.multiStepDownloadType = EMultiStepType::E_GOOGLE_DRIVE_DOWNLOAD; // no page comes any more
		}
		else
		{
			UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: The page leads to no file. Request %s, %s"), *RequestID,
				*CorvaneRules::shownAddress(Before.url));
		}
		return Requests;
	}
} // namespace CorvanePageRequest

FCorvPageRequest::FCorvPageRequest(FCorvRun& InRun)
	: run(InRun)
{
}

bool FCorvPageRequest::isSecondStep() const
{
	return plan.multiStepDownload == CorvanePageRequest::secondStep;
}

FString FCorvPageRequest::generateURLFromHTML(const FString& InHtml, const FString& InUrl)
{
	if (plan.HTMLFileSize == 0)
	{
		plan.HTMLFileSize = CorvaneRules::shownSize(InHtml);
	}
	if (plan.multiStepDownloadType == EMultiStepType::E_ANONFILES_PAGE)
	{
		return CorvaneRules::downloadLink(InHtml);
	}
	return InUrl + TEXT("&confirm=") + CorvaneRules::confirmationToken(InHtml);
}

bool FCorvPageRequest::findSecondStep(const IHttpResponse& InResponse, FString& OutUrl)
{
	const int32 Size = InResponse.GetContent().Num();
	if (plan.multiStepDownload != 1 || Size == 0 || Size > CorvanePageRequest::mostBytesOfPage)
	{
		return false;
	}
	OutUrl = generateURLFromHTML(InResponse.GetContentAsString(), run.httpRequest.url);
	return !OutUrl.EndsWith(TEXT("confirm=")); // without a token the answer is the file itself
}

void FCorvPageRequest::complete(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	FString Url;
	if (bInWasSuccessful && InResponse.IsValid() && findSecondStep(*InResponse, Url))
	{
		run.follow([Before = run.httpRequest, Url, ID = run.requestID, Plan = plan]
			{ return CorvanePageRequest::buildSecondStep(Before, Url, ID, Plan); });
	}
	else
	{
		run.deliver(InRequest, run.resultOf(InResponse, bInWasSuccessful));
	}
}

void FCorvPageRequest::completeFileInfo(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	FCorvFileInfoResult Result;
	Result.downloadID = plan.downloadID;
	if (bInWasSuccessful && InResponse.IsValid())
	{
		const FCorvFileInfo Info = CorvaneRules::readFileInfo(CorvaneResult::toText(InResponse->GetContent()));
		Result.fileName = Info.name;
		Result.fileSizeInBytes = Info.size;
		Result.statusCode = Info.bReadable ? InResponse->GetResponseCode() : CorvaneStatus::unreadablePage;
	}
	else
	{
		Result.statusCode = run.resultOf(InResponse, bInWasSuccessful).statusCode;
	}
	run.deliver(InRequest, MoveTemp(Result));
}
