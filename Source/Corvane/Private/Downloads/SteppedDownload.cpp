#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/FollowUp.h"
#include "Downloads/DownloadFile.h"
#include "Downloads/DownloadTargets.h"

// A download in steps: a probe for the size, then one ranged request after the other. Each is a request of its own.

namespace CorvaneSteppedDownload
{
	/** What a step hands on to the next; copies only, because the step is gone by then. */
	struct FStep
	{
		FString url;
		TMap<FString, FString> header;
		FString requestID;
		FString path; // full
		int64 stepSize = 0;
		int64 fullSize = 0;
		int64 start = 0;
		FCorvFileVersion version;
		FCorvSpeed speed;
		int64 download = 0;
	};

	static TArray<FhttpRequest> build(const FStep& Step)
	{
		TArray<FhttpRequest> Requests;
		FString RequestID;
		UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload({}, Step.url, Step.header, EHTTPCorvFileDownloadResumeType::E_RESUME,
			EHTTPCorvFileUpload::E_ad, Step.path, Step.requestID, Requests, RequestID, static_cast<int32>(Step.stepSize));
		if (!Requests.IsEmpty())
		{
			UCorvaneRequestCompleteObject* Object = Requests[0].requestCompleteObject();
			Object->setFileCancelResumeDownloadByteFullSize(Step.fullSize);
			Object->setFileCancelResumeDownloadByteStart(Step.start);
			Object->continueDownload(Step.download, Step.version, Step.speed);
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
} // namespace CorvaneSteppedDownload

void UCorvaneRequestCompleteObject::requestCompleteLowRamInternal(
	FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return;
	}
	if (!bInWasSuccessful || !InResponse.IsValid())
	{
		const bool bTooMuch = bTooMuchCame && !cancelIfAsked();
		if (bTooMuch && fileCancelResumeDownloadByteFullSize > 0)
		{
			abortSteps(InRequest, nullptr);
			return;
		}
		if (bTooMuch)
		{
			UE_LOG(LogTemp, Error, TEXT("File Download: Server does not suport download range or wrong url. Cancel Download"));
		}
		endSteps(InRequest, failureOf(InResponse));
	}
	else if (fileCancelResumeDownloadByteFullSize <= 0)
	{
		takeProbeAnswer(InRequest, InResponse);
	}
	else
	{
		takeStepAnswer(InRequest, InResponse);
	}
}

void UCorvaneRequestCompleteObject::takeProbeAnswer(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadAnswer Answer = CorvaneDownload::readAnswer(*InResponse, InResponse->GetResponseCode());
	if (cancelIfAsked())
	{
		endSteps(InRequest, CorvaneResult::noResponse());
	}
	else if (Answer.statusCode != 206 || Answer.range.total < 1)
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: Server does not suport download range or wrong url. Cancel Download"));
		endSteps(InRequest, failureOf(InResponse));
	}
	else if (CorvaneDownload::sizeOnDisk(fileCancelResumeDownloadDir) >= Answer.range.total)
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: File size equal to or larger than on the server. Cancel Download"));
		endSteps(InRequest, failureOf(InResponse));
	}
	else if (!isKeptVersion(*InResponse))
	{
		abortSteps(InRequest, nullptr); // behind the bytes of another version
	}
	else
	{
		startStep(*InResponse, Answer.range.total, fileCancelResumeDownloadByteStart);
	}
}

void UCorvaneRequestCompleteObject::takeStepAnswer(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadAnswer Answer = CorvaneDownload::readAnswer(*InResponse, InResponse->GetResponseCode());
	if (!writeStep(*InResponse, Answer))
	{
		endSteps(InRequest, failureOf(InResponse));
		return;
	}
	if (CorvaneDownload::sizeOnDisk(fileCancelResumeDownloadDir) >= Answer.range.total)
	{
		corvaneBPLibrary->downloadTargetList().keptVersions.forget(fileCancelResumeDownloadDir);
		endSteps(InRequest, CorvaneResult::successWithoutBody(*InResponse));
	}
	else
	{
		startStep(*InResponse, Answer.range.total, fileCancelResumeDownloadByteStart + Answer.bodyBytes);
	}
}

bool UCorvaneRequestCompleteObject::writeStep(const IHttpResponse& InResponse, const FCorvDownloadAnswer& InAnswer)
{
	const FString& Path = fileCancelResumeDownloadDir;
	const FCorvDownloadPermission Permission(corvaneBPLibrary->downloadTargetList(), Path, downloadNumber());
	const FCorvDownloadTarget Target{fileCancelResumeDownloadByteStart, CorvaneDownload::sizeOnDisk(Path)};
	const bool bSameFile = CorvaneSteppedDownload::isSame(fileVersion, CorvaneSteppedDownload::versionOf(InResponse, InAnswer.range.total));
	const bool bTooMuch = InAnswer.bodyBytes > CorvaneRules::mostStepBytes(fileCancelResumeDownloadByteStart,
												   fileCancelResumeDownloadBytePartSize, fileCancelResumeDownloadByteFullSize);
	if (!Permission.isGranted() || !bSameFile || bTooMuch || !CorvaneRules::isStep(InAnswer, Target))
	{
		UE_LOG(LogTemp, Error, TEXT("Something's went wrong. download is aborted "));
		return false;
	}
	const bool bWritten = CorvaneDownload::write(Path, InResponse.GetContent(), false);
	rememberVersion(InResponse); // also when only some of it was written
	return bWritten;
}

void UCorvaneRequestCompleteObject::abortSteps(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	UE_LOG(LogTemp, Error, TEXT("Something's went wrong. download is aborted "));
	endSteps(InRequest, failureOf(InResponse));
}

void UCorvaneRequestCompleteObject::startStep(const IHttpResponse& InResponse, int64 InTotal, int64 InStart)
{
	using namespace CorvaneSteppedDownload;
	const int64 StepSize = fileCancelResumeDownloadBytePartSize;
	FStep Step{httpRequest.url, httpRequest.header, requestID, fileCancelResumeDownloadDir, StepSize, FMath::Max<int64>(StepSize, InTotal),
		InStart, versionOf(InResponse, InTotal), {lastProgressBytes, lastProgressTime, megabitSpeed}, downloadNumber()};
	FCorvFollowUp FollowUp;
	FollowUp.requestID = requestID;
	FollowUp.url = httpRequest.url;
	FollowUp.cancelState = cancelState;
	FollowUp.node = node;
	FollowUp.abandon = [Path = Step.path, Download = Step.download](UCorvaneBPLibrary& Library)
	{ Library.downloadTargetList().release(Path, Download); };
	FollowUp.build = [Step = MoveTemp(Step)] { return build(Step); };
	completionPosted = true;
	CorvaneFollowUp::start(corvaneBPLibrary, MoveTemp(FollowUp));
}

void UCorvaneRequestCompleteObject::endSteps(const FHttpRequestPtr& InRequest, FCorvCompletion InResult)
{
	if (InResult.statusCode >= 400 && !cancelIfAsked())
	{
		const int64 Size = CorvaneDownload::sizeOnDisk(fileCancelResumeDownloadDir);
		tellFailedDownload(FString::Printf(TEXT("status %d, and %lld bytes are on disk"), InResult.statusCode, Size));
	}
	releaseDownloadTarget();
	deliver(InRequest, MoveTemp(InResult));
}

void UCorvaneRequestCompleteObject::continueDownload(int64 InDownload, FCorvFileVersion InVersion, const FCorvSpeed& InSpeed)
{
	inheritedDownload = InDownload;
	inheritedSpeed = InSpeed;
	fileVersion = MoveTemp(InVersion);
}
