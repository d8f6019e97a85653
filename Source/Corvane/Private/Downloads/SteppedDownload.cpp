#include "Downloads/SteppedDownload.h"

#include "CorvaneRequestCompleteObject.h"
#include "Rules/ShownAddress.h"
#include "Rules/StatusCodes.h"
#include "Runs/Result.h"
#include "Runs/Run.h"

namespace CorvaneSteppedDownload
{
	static TArray<FhttpRequest> build(const FhttpRequest& Before, const FString& RequestID, const FCorvDownloadStep& Step)
	{
		TArray<FhttpRequest> Requests;
		FString ID;
		UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload({}, Before.url, Before.header, EHTTPCorvFileDownloadResumeType::E_RESUME,
			EHTTPCorvFileUpload::E_ad, Step.path, RequestID, Requests, ID, static_cast<int32>(Step.plan.stepSize));
		if (!Requests.IsEmpty())
		{
			Requests[0].requestCompleteObject()->steppedDownload().continueFrom(Step);
		}
		else
		{
			UE_LOG(LogTemp, Error, TEXT("File Download: %s is not complete: its next step was refused. Request %s, %s"), *Step.path,
				*RequestID, *CorvaneRules::shownAddress(Before.url));
		}
		return Requests;
	}

	static FCorvFileVersion versionOf(const IHttpResponse& Response, int64 Total)
	{
		return {Response.GetHeader(TEXT("ETag")), Response.GetHeader(TEXT("Last-Modified")), Total};
	}

	static bool isSame(const FCorvFileVersion& Left, const FCorvFileVersion& Right)
	{
		return Left.eTag.Equals(Right.eTag) && Left.lastModified.Equals(Right.lastModified) && Left.total == Right.total;
	}

	static void logNoRanges()
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: Server does not suport download range or wrong url. Cancel Download"));
	}

	static void logAborted()
	{
		UE_LOG(LogTemp, Error, TEXT("Something's went wrong. download is aborted "));
	}
} // namespace CorvaneSteppedDownload

FCorvSteppedDownload::FCorvSteppedDownload(FCorvRun& InRun, FCorvDownload& InDownload)
	: run(InRun)
	, download(InDownload)
{
}

void FCorvSteppedDownload::continueFrom(FCorvDownloadStep InStep)
{
	download.plan = InStep.plan;
	download.inheritedSpeed = InStep.speed;
	download.file.inherit(InStep.download);
	version = MoveTemp(InStep.version);
}

void FCorvSteppedDownload::complete(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	if (!bInWasSuccessful || !InResponse.IsValid())
	{
		takeBrokenAnswer(InRequest, InResponse);
	}
	else if (download.plan.fullSize <= 0)
	{
		takeProbeAnswer(InRequest, InResponse);
	}
	else
	{
		takeStepAnswer(InRequest, InResponse);
	}
}

void FCorvSteppedDownload::takeBrokenAnswer(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const bool bTooMuch = bTooMuchCame && !run.cancelIfAsked();
	const bool bIsStep = download.plan.fullSize > 0;
	if (bTooMuch && bIsStep)
	{
		CorvaneSteppedDownload::logAborted();
	}
	else if (bTooMuch)
	{
		CorvaneSteppedDownload::logNoRanges();
	}
	end(InRequest, run.failureOf(bTooMuch && bIsStep ? nullptr : InResponse));
}

void FCorvSteppedDownload::takeProbeAnswer(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadAnswer Answer = FCorvDownload::readAnswer(*InResponse);
	if (run.cancelIfAsked())
	{
		end(InRequest, CorvaneResult::noResponse());
	}
	else if (Answer.statusCode != CorvaneStatus::partialContent || Answer.range.total < 1)
	{
		CorvaneSteppedDownload::logNoRanges();
		end(InRequest, run.failureOf(InResponse));
	}
	else if (download.file.size() >= Answer.range.total)
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: File size equal to or larger than on the server. Cancel Download"));
		download.file.tellLeftAlone(FString::Printf(TEXT("the server has %lld bytes"), Answer.range.total));
		deliver(InRequest, run.failureOf(InResponse));
	}
	else if (!download.file.isOfKeptVersion(*InResponse)) // it would go after the bytes of another one
	{
		CorvaneSteppedDownload::logAborted();
		end(InRequest, CorvaneResult::noResponse());
	}
	else
	{
		startStep(*InResponse, Answer.range.total, download.plan.start);
	}
}

void FCorvSteppedDownload::takeStepAnswer(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadAnswer Answer = FCorvDownload::readAnswer(*InResponse);
	if (!writeStep(*InResponse, Answer))
	{
		end(InRequest, run.failureOf(InResponse));
	}
	else if (download.file.size() >= Answer.range.total)
	{
		download.file.forgetVersion();
		end(InRequest, CorvaneResult::successWithoutBody(*InResponse));
	}
	else
	{
		startStep(*InResponse, Answer.range.total, download.plan.start + Answer.bodyBytes);
	}
}

bool FCorvSteppedDownload::writeStep(const IHttpResponse& InResponse, const FCorvDownloadAnswer& InAnswer)
{
	using namespace CorvaneSteppedDownload;
	const FCorvDownloadPermission Permission = download.file.askToWrite();
	const FCorvDownloadTarget Target{download.plan.start, download.file.size()};
	const bool bSameFile = isSame(version, versionOf(InResponse, InAnswer.range.total));
	const bool bTooMuch = InAnswer.bodyBytes > mostBytes();
	if (!Permission.isGranted() || !bSameFile || bTooMuch || !CorvaneRules::isStep(InAnswer, Target))
	{
		logAborted();
		return false;
	}
	return download.file.write(InResponse, false);
}

void FCorvSteppedDownload::startStep(const IHttpResponse& InResponse, int64 InTotal, int64 InStart)
{
	const int64 StepSize = download.plan.stepSize;
	const FCorvDownloadPlan Plan{InStart, StepSize, FMath::Max<int64>(StepSize, InTotal)};
	const FCorvDownloadStep Step{
		download.file.path, Plan, CorvaneSteppedDownload::versionOf(InResponse, InTotal), download.speed, download.file.download()};
	run.follow([Before = run.httpRequest, ID = run.requestID, Step] { return CorvaneSteppedDownload::build(Before, ID, Step); },
		[Path = Step.path, Download = Step.download](UCorvaneBPLibrary& Library) { Library.downloadTargetList().release(Path, Download); });
}

void FCorvSteppedDownload::end(const FHttpRequestPtr& InRequest, FCorvCompletion InResult)
{
	if (InResult.statusCode >= CorvaneStatus::firstError && !run.cancelIfAsked())
	{
		download.file.tellIncomplete(
			FString::Printf(TEXT("status %d, and %lld bytes are on disk"), InResult.statusCode, download.file.size()));
	}
	deliver(InRequest, MoveTemp(InResult));
}

void FCorvSteppedDownload::deliver(const FHttpRequestPtr& InRequest, FCorvCompletion InResult)
{
	download.file.release();
	run.deliver(InRequest, MoveTemp(InResult));
}

int64 FCorvSteppedDownload::mostBytes() const
{
	return CorvaneRules::mostStepBytes(download.plan.start, download.plan.stepSize, download.plan.fullSize);
}

void FCorvSteppedDownload::report(IHttpRequest& InRequest, uint64 InBytesReceived)
{
	if (!bTooMuchCame && static_cast<int64>(InBytesReceived) > mostBytes())
	{
		bTooMuchCame = true; // memory stays bounded, and the completion knows why the exchange failed
		InRequest.CancelRequest(); // from here: the game thread may stand still for long enough to fill the memory
	}
	// Over the whole file, not over this step.
	const float Full = download.plan.fullSize > 0 ? static_cast<float>(download.plan.fullSize) : 1.0f;
	download.report(Full, download.plan.start + static_cast<int64>(InBytesReceived));
}
