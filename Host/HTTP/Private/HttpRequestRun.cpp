#include "Async/Async.h"
#include "CoreGlobals.h"
#include "HttpRequest.h"

// What a request does from its start to its completion.

bool FHttpRequest::ParseUrl()
{
	Url = FUrl::Parse(UrlText);
	if (!Url)
	{
		UE_LOG(LogHttp, Error, TEXT("Request failed: not a valid http or https URL"));
	}
	return Url.has_value();
}

void FHttpRequest::BeginResponse()
{
	if (!Response.IsValid())
	{
		Response = MakeShared<FHttpResponse>(UrlText);
	}
}

void FHttpRequest::TakeStatus(int32 Code)
{
	StatusDelegate.ExecuteIfBound(Self(), Code);
}

void FHttpRequest::TakeHeader(FString Name, FString Value)
{
	HeaderDelegate.ExecuteIfBound(Self(), Name, Value);
	Response->AddHeader(std::move(Name), std::move(Value));
}

bool FHttpRequest::TakeBody(char* Bytes, size_t Number)
{
	BytesReceived += Number;
	if (!PassOn(Bytes, Number))
	{
		return false;
	}
	if (bOnGameThread)
	{
		ArrangeProgress();
	}
	else
	{
		RunProgress();
	}
	return true;
}

bool FHttpRequest::PassOn(char* Bytes, size_t Number)
{
	const bool bStreams = ResponseStreamDelegate.IsBound() || ResponseStream.IsValid();
	if (bStreams && bCancelled)
	{
		bBytesDropped = true;
		return true; // the end is on its way
	}
	int64 Length = static_cast<int64>(Number);
	if (ResponseStreamDelegate.ExecuteIfBound(Bytes, Length))
	{
		return Length == static_cast<int64>(Number);
	}
	if (ResponseStream.IsValid())
	{
		ResponseStream->Serialize(Bytes, Length);
		return !ResponseStream->IsError();
	}
	return Response->Append(Bytes, Number);
}

void FHttpRequest::NoteSent(uint64 Bytes)
{
	BytesSent = Bytes;
	if (bOnGameThread)
	{
		ArrangeProgress();
	}
}

void FHttpRequest::ArrangeProgress()
{
	if (ProgressDelegate.IsBound() && !bProgressArranged.exchange(true))
	{
		AsyncTask(ENamedThreads::GameThread,
			[Shared = shared_from_this()]
			{
				Shared->bProgressArranged = false;
				Shared->RunProgress();
			});
	}
}

void FHttpRequest::RunProgress()
{
	const uint64 Sent = BytesSent;
	const uint64 Received = BytesReceived;
	if (bProcessing && (Sent != ReportedSent || Received != ReportedReceived))
	{
		ReportedSent = Sent;
		ReportedReceived = Received;
		ProgressDelegate.ExecuteIfBound(Self(), Sent, Received);
	}
}

void FHttpRequest::End(FHttpOutcome Outcome)
{
	bEnded = true;
	if (bOnGameThread && !IsInGameThread())
	{
		AsyncTask(ENamedThreads::GameThread, [Shared = shared_from_this(), Outcome] { Shared->Complete(Outcome); });
	}
	else
	{
		Complete(Outcome);
	}
}

void FHttpRequest::EndWithoutService()
{
	bEnded = true; // for a cancel that a later service is asked for
	AsyncTask(ENamedThreads::GameThread, [Shared = shared_from_this()] { Shared->Complete({}); });
}

void FHttpRequest::Complete(FHttpOutcome Outcome)
{
	const bool bSucceeded = Outcome.Reason == EHttpFailureReason::None;
	Body.reset();
	ContentStream.Reset();
	RunProgress();
	const TSharedPtr<FHttpResponse> Shown = Response;
	if (Shown.IsValid())
	{
		Shown->Complete(Outcome.Code, Outcome.Reason, EffectiveURL);
	}
	if (!bSucceeded)
	{
		Response.Reset();
	}
	FailureReason = Outcome.Reason;
	bTimedOut |= Outcome.Reason == EHttpFailureReason::TimedOut;
	bProcessing = false;
	CompleteDelegate.ExecuteIfBound(Self(), Shown, bSucceeded);
}
