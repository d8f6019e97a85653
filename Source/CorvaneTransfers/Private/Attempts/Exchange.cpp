#include "Attempts/Exchange.h"

#include "HAL/PlatformTime.h"
#include "HttpModule.h"
#include "Interfaces/IHttpResponse.h"
#include "Misc/ScopeLock.h"

namespace CorvaneExchangeLimits
{
	/** How long the engine tries to get a connection. */
	static constexpr float ConnectSeconds = 30;
	/** What ends so near to it is not told from it. */
	static constexpr float Near = 1;

	static bool IsNearConnectLimit(double Seconds)
	{
		return Seconds > ConnectSeconds - Near && Seconds < ConnectSeconds + Near;
	}
} // namespace CorvaneExchangeLimits

FCorvaneExchange::FCorvaneExchange(const TSharedRef<FCorvaneExchangeReceiver>& InReceiver)
	: Receiver(InReceiver)
{
}

TSharedRef<FCorvaneExchange> FCorvaneExchange::Start(
	const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& InReceiver)
{
	const TSharedRef<FCorvaneExchange> Self = MakeShared<FCorvaneExchange>(InReceiver);
	const FHttpRequestRef Made = FHttpModule::Get().CreateRequest();
	const bool bMistakable = CorvaneExchangeLimits::IsNearConnectLimit(Asked.SilenceSeconds);
	const float Limit = bMistakable ? CorvaneExchangeLimits::ConnectSeconds + CorvaneExchangeLimits::Near : Asked.SilenceSeconds;
	Fill(Asked, *Made);
	Made->SetActivityTimeout(Limit);
	Bind(Self, *Made);
	Self->bAsksForBody = Asked.Verb == TEXT("GET");
	Self->Sent = Asked.Stream;
	Self->Reader.Keep(Asked.HeadersToKeep);
	Self->Send(Made, Limit);
	return Self;
}

void FCorvaneExchange::Fill(const FCorvaneExchangeRequest& Asked, IHttpRequest& OutRequest)
{
	OutRequest.SetVerb(Asked.Verb);
	OutRequest.SetURL(Asked.URL);
	for (const TPair<FString, FString>& Header : Asked.Headers)
	{
		OutRequest.SetHeader(Header.Key, Header.Value);
	}
	if (Asked.Stream.IsValid())
	{
		OutRequest.SetContentFromStream(Asked.Stream.ToSharedRef());
	}
	else if (!Asked.Body.IsEmpty())
	{
		OutRequest.SetContentAsString(Asked.Body);
	}
	OutRequest.SetHeader(TEXT("Accept-Encoding"), TEXT("identity"));
	OutRequest.SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy::CompleteOnHttpThread);
}

/** The callbacks keep the exchange: from here to its end it is held by the request, and the request by the HTTP module. */
void FCorvaneExchange::Bind(const TSharedRef<FCorvaneExchange>& Self, IHttpRequest& OutRequest)
{
	OutRequest.OnStatusCodeReceived().BindLambda([Self](FHttpRequestPtr, int32 Code) { Self->Reader.TakeStatus(Code); });
	OutRequest.OnHeaderReceived().BindLambda(
		[Self](FHttpRequestPtr, const FString& Name, const FString& Value)
		{
			if (!Self->bToldAnswer) // else it stands behind the body
			{
				Self->Reader.TakeHeader(Name, Value);
			}
		});
	FHttpRequestStreamDelegateV2 Stream;
	Stream.BindLambda([Self](void* Bytes, int64& InOutNumber) { Self->TakeBytes(Bytes, InOutNumber); });
	OutRequest.SetResponseBodyReceiveStreamDelegateV2(Stream);
	OutRequest.OnProcessRequestComplete().BindLambda(
		[Self](FHttpRequestPtr Done, FHttpResponsePtr Response, bool bSucceeded) { Self->Complete(Done, Response, bSucceeded); });
}

void FCorvaneExchange::Send(const FHttpRequestRef& InRequest, float InSilenceSeconds)
{
	const FScopeLock Lock(&Guard); // the end, on whatever thread it comes, waits until it is known whether there was a beginning
	Request = InRequest;
	SilenceSeconds = InSilenceSeconds;
	StartedAt = FPlatformTime::Seconds();
	bSent = InRequest->ProcessRequest();
}

void FCorvaneExchange::Cancel()
{
	FHttpRequestPtr Running;
	{
		const FScopeLock Lock(&Guard);
		Running = Request;
	}
	if (Running.IsValid())
	{
		Running->CancelRequest();
	}
}

void FCorvaneExchange::TakeBytes(void* Bytes, int64& InOutNumber)
{
	bStopped = bStopped || !TellAnswer();
	if (!bStopped)
	{
		BodyBytes += InOutNumber;
		bStopped = !Receiver->OnBytes(static_cast<const uint8*>(Bytes), InOutNumber);
	}
	if (bStopped)
	{
		InOutNumber = -1; // any other number than that of the bytes ends the transfer
	}
}

/** @return false when the receiver wants no body. */
bool FCorvaneExchange::TellAnswer()
{
	if (bToldAnswer)
	{
		return true;
	}
	bToldAnswer = true;
	return Receiver->OnAnswer(Reader.Get());
}

void FCorvaneExchange::Complete(const FHttpRequestPtr& Done, const FHttpResponsePtr& Response, bool bSucceeded)
{
	FCorvaneExchangeResult Result;
	{
		const FScopeLock Lock(&Guard);
		Request.Reset();
		Result.End = Judge(Done->GetFailureReason(), bSucceeded);
	}
	if (Response.IsValid())
	{
		Result.ReachedURL = Response->GetEffectiveURL();
		if (Reader.Get().Code == 0)
		{
			Reader.TakeStatus(Response->GetResponseCode()); // redirects, and what has not changed, show nothing before
		}
	}
	if (Reader.Get().Code < 200)
	{
		Reader.TakeStatus(0); // an interim answer is none
	}
	if (Result.End == ECorvaneExchangeEnd::Done && MayBeCutInItsLines())
	{
		Result.End = ECorvaneExchangeEnd::Dropped;
	}
	if (Result.End == ECorvaneExchangeEnd::Done)
	{
		TellAnswer();
	}
	Result.Answer = Reader.Get();
	Result.bAnswerIsWhole = bToldAnswer;
	Result.BodyBytes = BodyBytes;
	Result.SentBytes = Sent.IsValid() ? Sent->GetHandedOut() : 0;
	Receiver->OnEnd(Result);
}

ECorvaneExchangeEnd FCorvaneExchange::Judge(EHttpFailureReason Reason, bool bSucceeded) const
{
	if (bSucceeded || bStopped)
	{
		return bSucceeded ? ECorvaneExchangeEnd::Done : ECorvaneExchangeEnd::StoppedByUs;
	}
	if (!bSent)
	{
		return ECorvaneExchangeEnd::NotSent;
	}
	switch (Reason)
	{
	case EHttpFailureReason::Cancelled:
		return ECorvaneExchangeEnd::Cancelled;
	case EHttpFailureReason::TimedOut:
		return ECorvaneExchangeEnd::TimedOut;
	case EHttpFailureReason::ConnectionError:
		return JudgeConnectionError();
	default:
		return ECorvaneExchangeEnd::Dropped;
	}
}

/** A connection that breaks off between the lines of an answer counts as the end of an empty body, unless a line had told more. */
bool FCorvaneExchange::MayBeCutInItsLines() const
{
	const FCorvaneAnswer& Answer = Reader.Get();
	const bool bLinesMatter = Answer.Code == 416 || (Answer.IsSuccess() && Answer.Code != 204);
	return bAsksForBody && bLinesMatter && BodyBytes == 0 && !Answer.bTellsEnd;
}

/** The engine has one reason for "no way there" and "silence": only the time that each takes tells them apart. */
ECorvaneExchangeEnd FCorvaneExchange::JudgeConnectionError() const
{
	const double Seconds = FPlatformTime::Seconds() - StartedAt;
	const bool bTookItsTime = Seconds >= static_cast<double>(SilenceSeconds) && !CorvaneExchangeLimits::IsNearConnectLimit(Seconds);
	const bool bSilent = Reader.Get().Code != 0 || bTookItsTime;
	return bSilent ? ECorvaneExchangeEnd::Stalled : ECorvaneExchangeEnd::NoConnection;
}
