#include "Downloads/Download.h"

#include "Misc/DateTime.h"
#include "Rules/StatusCodes.h"
#include "Runs/Result.h"
#include "Runs/Run.h"

namespace CorvaneDownload
{
	/** Text takes several times the memory and time of the bytes, and a string has limits; nobody reads such a file as text. */
	constexpr int32 mostBytesAsText = 64 << 20;

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

	static FString rangeHeader(const IHttpResponse& Response)
	{
		const FString Value = Response.GetHeader(TEXT("Content-Range"));
		return Value.Len() < 2 ? Response.GetHeader(TEXT("content-range")) : Value; // not every platform ignores the case
	}
} // namespace CorvaneDownload

FCorvDownload::FCorvDownload(FCorvRun& InRun)
	: file(InRun)
	, run(InRun)
{
}

FCorvDownloadAnswer FCorvDownload::readAnswer(const IHttpResponse& InResponse)
{
	return {
		InResponse.GetResponseCode(), CorvaneRules::contentRange(CorvaneDownload::rangeHeader(InResponse)), InResponse.GetContent().Num()};
}

FCorvDownloadTarget FCorvDownload::targetOf(const FHttpRequestPtr& InRequest) const
{
	// The dispatcher sets a Range header for a start above 0 only: any other is the script's own.
	const bool bOwnRange = plan.start == 0 && InRequest.IsValid() && !InRequest->GetHeader(TEXT("Range")).IsEmpty();
	return {plan.start, file.size(), bOwnRange};
}

void FCorvDownload::complete(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	const bool bHappened = bInWasSuccessful && InResponse.IsValid();
	FCorvCompletion Result = bHappened ? writeBody(InRequest, InResponse) : broken(InRequest, InResponse);
	file.release();
	run.deliver(InRequest, MoveTemp(Result));
}

FCorvCompletion FCorvDownload::writeBody(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadPermission Permission = file.askToWrite();
	const FCorvDownloadTarget Target = targetOf(InRequest);
	const FCorvDownloadAnswer Answer = readAnswer(*InResponse);
	const ECorvDownloadAction Action = CorvaneRules::planDownload(Answer, Target);
	if (Action == ECorvDownloadAction::Nothing || Action == ECorvDownloadAction::Complete)
	{
		if (!CorvaneStatus::isDone(Answer.statusCode))
		{
			const FString Reason = FString::Printf(TEXT("the server answered %d"), Answer.statusCode);
			Action == ECorvDownloadAction::Complete ? file.tellLeftAlone(Reason) : file.tellIncomplete(Reason);
		}
		return CorvaneDownload::resultOf(*InResponse, Action == ECorvDownloadAction::Nothing);
	}
	if (!Permission.isGranted())
	{
		return file.failure(TEXT("another download has taken the file over"));
	}
	if (Action == ECorvDownloadAction::Append && plan.start > 0 && file.isOfOtherVersion(*InResponse))
	{
		return file.failure(TEXT("the answer is of another version than the bytes on disk"));
	}
	if (Action == ECorvDownloadAction::Refuse)
	{
		return file.failure(CorvaneDownload::refusalOf(Answer, Target));
	}
	return writePlanned(*InResponse, Answer, Action == ECorvDownloadAction::Replace, Target.bOwnRange);
}

FCorvCompletion FCorvDownload::writePlanned(
	const IHttpResponse& InResponse, const FCorvDownloadAnswer& InAnswer, bool bInReplace, bool bInPartOfChoice)
{
	if (!file.write(InResponse, bInReplace))
	{
		return file.failure(TEXT("not all of it could be written"));
	}
	const int64 Size = file.size();
	if (!bInPartOfChoice && !CorvaneRules::isAsTold(InAnswer, Size))
	{
		return file.failure(
			FString::Printf(TEXT("it has %lld bytes, and the server told of %lld"), Size, CorvaneRules::toldSize(InAnswer)));
	}
	file.forgetVersion();
	return CorvaneDownload::resultOf(InResponse, true);
}

FCorvCompletion FCorvDownload::broken(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	if (InResponse.IsValid())
	{
		keepReceivedBytes(InRequest, InResponse);
	}
	if (!run.cancelIfAsked())
	{
		file.tellIncomplete(FString::Printf(TEXT("the transfer broke off, and %lld bytes are on disk"), file.size()));
	}
	return run.failureOf(InResponse);
}

void FCorvDownload::keepReceivedBytes(const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse)
{
	const FCorvDownloadPermission Permission = file.askToWrite();
	FCorvDownloadAnswer Answer = readAnswer(*InResponse);
	Answer.statusCode = run.codeOf(InResponse);
	const bool bKept = CorvaneRules::areReceivedBytesKept(Answer, targetOf(InRequest)) && !file.isOfOtherVersion(*InResponse);
	if (Permission.isGranted() && bKept)
	{
		file.write(*InResponse, false);
	}
}

void FCorvDownload::reportBody(uint64 InBytesReceived, uint64 InBodySize)
{
	// A resumed download counts what is on disk already, on both sides of the division.
	const uint64 Start = static_cast<uint64>(plan.start);
	const float Known = static_cast<float>(InBodySize + Start);
	report(Known > 0 ? Known : 1.0f, static_cast<int64>(InBytesReceived + Start));
}

void FCorvDownload::report(float InTotal, int64 InReceived)
{
	constexpr float mebibytesPerByte = 9.536743e-7f;
	speed.measure(FDateTime::UtcNow().GetTicks(), InReceived); // local time jumps twice a year
	const float Received = static_cast<float>(InReceived);
	run.report([Size = InTotal * mebibytesPerByte, Megabytes = Received * mebibytesPerByte, Percent = Received / InTotal * 100,
				   Speed = speed.megabit, ID = run.requestID](const UCorvaneBPLibrary& Library)
		{ Library.onhttpFileDownloadDelegate.Broadcast(Size, Megabytes, Percent, Speed, ID); });
}
