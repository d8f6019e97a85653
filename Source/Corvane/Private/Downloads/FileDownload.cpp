#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Downloads/DownloadFile.h"
#include "Downloads/DownloadTargets.h"
#include "Rules/ShownAddress.h"

// A download that arrives as one body. In all cases the file is closed before the result goes out, so that a handler may
// resume at once.

namespace CorvaneFileDownload
{
	/** Text takes several times the memory and time of the bytes, and a string has limits; nobody reads such a file as text. */
	constexpr int32 mostBytesAsText = 64 << 20;

	/** @return whether the script set a Range header; the dispatcher sets one only for a start above 0. */
	static bool hasOwnRange(const FHttpRequestPtr& Request, int64 Start)
	{
		return Start == 0 && Request.IsValid() && !Request->GetHeader(TEXT("Range")).IsEmpty();
	}

	/** The event of a download carries no bytes: they are on disk. */
	static FCorvCompletion resultOf(const IHttpResponse& Response, bool bWithLines)
	{
		FCorvCompletion Result = CorvaneResult::successWithoutBody(Response);
		const int32 Size = Response.GetContent().Num();
		if (Size > mostBytesAsText)
		{
			UE_LOG(LogTemp, Display, TEXT("File Download: %d bytes are too many for the text of the event, which stays empty."), Size);
			return Result;
		}
		Result.dataString = Response.GetContentAsString();
		if (bWithLines)
		{
			Result.dataArray = CorvaneResult::toLines(Result.dataString);
		}
		return Result;
	}

	/** What keeps an answer's body out of the file, in words. */
	static FString refusalOf(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		return FString::Printf(TEXT("the answer %d (%lld bytes from %lld on, of %lld) does not follow the %lld bytes on disk"),
			Answer.statusCode, Answer.bodyBytes, Answer.range.first, Answer.range.total, Target.size);
	}
} // namespace CorvaneFileDownload

void UCorvaneRequestCompleteObject::completeDownload(
	const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	const bool bHappened = bInWasSuccessful && InResponse.IsValid();
	FCorvCompletion Result = bHappened ? writeBody(InRequest, InResponse) : keepReceivedBytes(InRequest, InResponse);
	releaseDownloadTarget();
	deliver(InRequest, MoveTemp(Result));
}

FCorvCompletion UCorvaneRequestCompleteObject::writeBody(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FString& Path = fileCancelResumeDownloadDir;
	const FCorvDownloadPermission Permission(corvaneBPLibrary->downloadTargetList(), Path, downloadNumber());
	const int64 Start = fileCancelResumeDownloadByteStart;
	const FCorvDownloadTarget Target{Start, CorvaneDownload::sizeOnDisk(Path), CorvaneFileDownload::hasOwnRange(InRequest, Start)};
	const FCorvDownloadAnswer Answer = CorvaneDownload::readAnswer(*InResponse, InResponse->GetResponseCode());
	const ECorvDownloadAction Action = CorvaneRules::planDownload(Answer, Target);
	if (Action == ECorvDownloadAction::Nothing || Action == ECorvDownloadAction::Complete)
	{
		if (Answer.statusCode < 200 || Answer.statusCode > 299)
		{
			tellFailedDownload(FString::Printf(TEXT("the server answered %d"), Answer.statusCode));
		}
		return CorvaneFileDownload::resultOf(*InResponse, Action == ECorvDownloadAction::Nothing);
	}
	if (!Permission.isGranted())
	{
		return failedDownload(TEXT("another download has taken the file over"));
	}
	if (Action == ECorvDownloadAction::Append && Start > 0 && !isKeptVersion(*InResponse))
	{
		return failedDownload(TEXT("the answer is of another version than the bytes on disk"));
	}
	if (Action == ECorvDownloadAction::Refuse)
	{
		return failedDownload(CorvaneFileDownload::refusalOf(Answer, Target));
	}
	if (!CorvaneDownload::write(Path, InResponse->GetContent(), Action == ECorvDownloadAction::Replace))
	{
		rememberVersion(*InResponse); // some of it may have reached the disk
		return failedDownload(TEXT("not all of it could be written"));
	}
	const int64 SizeOnDisk = CorvaneDownload::sizeOnDisk(Path);
	if (!Target.bOwnRange && !CorvaneRules::isAsTold(Answer, SizeOnDisk))
	{
		rememberVersion(*InResponse);
		return failedDownload(
			FString::Printf(TEXT("it has %lld bytes, and the server told of %lld"), SizeOnDisk, CorvaneRules::toldSize(Answer)));
	}
	corvaneBPLibrary->downloadTargetList().keptVersions.forget(Path);
	return CorvaneFileDownload::resultOf(*InResponse, true);
}

FCorvCompletion UCorvaneRequestCompleteObject::keepReceivedBytes(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FString& Path = fileCancelResumeDownloadDir;
	if (InResponse.IsValid())
	{
		const FCorvDownloadPermission Permission(corvaneBPLibrary->downloadTargetList(), Path, downloadNumber());
		const int64 Start = fileCancelResumeDownloadByteStart;
		const FCorvDownloadTarget Target{Start, CorvaneDownload::sizeOnDisk(Path), CorvaneFileDownload::hasOwnRange(InRequest, Start)};
		const FCorvDownloadAnswer Answer = CorvaneDownload::readAnswer(*InResponse, codeOf(InResponse));
		if (Permission.isGranted() && CorvaneRules::areReceivedBytesKept(Answer, Target) && isKeptVersion(*InResponse))
		{
			CorvaneDownload::write(Path, InResponse->GetContent(), false);
			rememberVersion(*InResponse); // also when only some of it was written
		}
	}
	if (!cancelIfAsked())
	{
		tellFailedDownload(FString::Printf(TEXT("the transfer broke off, and %lld bytes are on disk"), CorvaneDownload::sizeOnDisk(Path)));
	}
	return failureOf(InResponse);
}

FCorvCompletion UCorvaneRequestCompleteObject::failedDownload(const FString& InReason)
{
	tellFailedDownload(InReason);
	return CorvaneResult::noResponse();
}

void UCorvaneRequestCompleteObject::tellFailedDownload(const FString& InReason)
{
	UE_LOG(LogTemp, Error, TEXT("File Download: %s is not complete: %s. Request %s, %s"), *fileCancelResumeDownloadDir, *InReason,
		*requestID, *CorvaneRules::shownAddress(httpRequest.url));
}

bool UCorvaneRequestCompleteObject::isKeptVersion(const IHttpResponse& InResponse) const
{
	const FString Version = corvaneBPLibrary->downloadTargetList().keptVersions.find(
		fileCancelResumeDownloadDir, CorvaneDownload::sizeOnDisk(fileCancelResumeDownloadDir));
	return Version.IsEmpty() ||
		   Version.Equals(CorvaneRules::versionOf(InResponse.GetHeader(TEXT("ETag")), InResponse.GetHeader(TEXT("Last-Modified"))));
}

void UCorvaneRequestCompleteObject::rememberVersion(const IHttpResponse& InResponse)
{
	const FString Version = CorvaneRules::versionOf(InResponse.GetHeader(TEXT("ETag")), InResponse.GetHeader(TEXT("Last-Modified")));
	const int64 Size = CorvaneDownload::sizeOnDisk(fileCancelResumeDownloadDir);
	corvaneBPLibrary->downloadTargetList().keptVersions.remember(fileCancelResumeDownloadDir, Size, Version);
}

int64 UCorvaneRequestCompleteObject::downloadNumber() const
{
	return inheritedDownload != 0 ? inheritedDownload : currentRun;
}

void UCorvaneRequestCompleteObject::claimDownloadTarget()
{
	if (!fileCancelResumeDownloadDir.IsEmpty() && inheritedDownload == 0) // a later step goes on with what the first one claimed
	{
		corvaneBPLibrary->downloadTargetList().claim(fileCancelResumeDownloadDir, currentRun);
	}
}

void UCorvaneRequestCompleteObject::releaseDownloadTarget()
{
	corvaneBPLibrary->downloadTargetList().release(fileCancelResumeDownloadDir, downloadNumber());
}
