#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Downloads/DownloadFile.h"
#include "Downloads/DownloadTargets.h"

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
} // namespace CorvaneFileDownload

void UCorvaneRequestCompleteObject::completeDownload(
	const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	FCorvCompletion Result;
	if (!bInWasSuccessful || !InResponse.IsValid())
	{
		if (InResponse.IsValid())
		{
			keepReceivedBytes(*InResponse, codeOf(InResponse));
		}
		Result = failureOf(InResponse);
	}
	else if (ECorvDownloadAction Done = writeBody(InRequest, *InResponse); Done == ECorvDownloadAction::Refuse)
	{
		Result = CorvaneResult::noResponse();
	}
	else
	{
		Result = CorvaneFileDownload::resultOf(*InResponse, Done != ECorvDownloadAction::Complete);
	}
	releaseDownloadTarget();
	deliver(InRequest, MoveTemp(Result));
}

ECorvDownloadAction UCorvaneRequestCompleteObject::writeBody(const FHttpRequestPtr& InRequest, const IHttpResponse& InResponse)
{
	const FString& Path = fileCancelResumeDownloadDir;
	const FCorvDownloadPermission Permission(corvaneBPLibrary->downloadTargetList(), Path, downloadNumber());
	const int64 Start = fileCancelResumeDownloadByteStart;
	const FCorvDownloadTarget Target{Start, CorvaneDownload::sizeOnDisk(Path), CorvaneFileDownload::hasOwnRange(InRequest, Start)};
	const ECorvDownloadAction Action =
		CorvaneRules::planDownload(CorvaneDownload::readAnswer(InResponse, InResponse.GetResponseCode()), Target);
	if (Action != ECorvDownloadAction::Append && Action != ECorvDownloadAction::Replace)
	{
		return Action;
	}
	const bool bReplace = Action == ECorvDownloadAction::Replace;
	const bool bWritten = Permission.isGranted() && CorvaneDownload::write(Path, InResponse.GetContent(), bReplace);
	return bWritten ? Action : ECorvDownloadAction::Refuse;
}

void UCorvaneRequestCompleteObject::keepReceivedBytes(const IHttpResponse& InResponse, int32 InStatusCode)
{
	const FString& Path = fileCancelResumeDownloadDir;
	const FCorvDownloadPermission Permission(corvaneBPLibrary->downloadTargetList(), Path, downloadNumber());
	const FCorvDownloadTarget Target{fileCancelResumeDownloadByteStart, CorvaneDownload::sizeOnDisk(Path)};
	const FCorvDownloadAnswer Answer = CorvaneDownload::readAnswer(InResponse, InStatusCode);
	if (Permission.isGranted() && CorvaneRules::areReceivedBytesKept(Answer, Target))
	{
		CorvaneDownload::write(Path, InResponse.GetContent(), false);
	}
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
