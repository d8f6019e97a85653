#include "HttpRequest.h"

#include "Async/Async.h"
#include "HttpThread.h"
#include "RequestHeaders.h"
#include "Text.h"

#include <algorithm>

bool FHttpRequest::ProcessRequest()
{
	if (!MayChange())
	{
		return false; // the run that goes on has a completion of its own
	}
	Response.Reset();
	FailureReason = EHttpFailureReason::None;
	EffectiveURL = UrlText;
	bCancelled = bBytesDropped = false;
	BytesSent = BytesReceived = ReportedSent = ReportedReceived = 0;
	bOnGameThread = Policy == EHttpRequestDelegateThreadPolicy::CompleteOnGameThread || FHttpThread::Get().ForcesGameThread();
	bProcessing = true;
	const FString Fault = Prepare();
	bRefused = !Fault.IsEmpty();
	if (!bRefused)
	{
		return FHttpThread::Get().Start(shared_from_this());
	}
	UE_LOG(LogHttp, Error, TEXT("Request refused: %s"), *Fault);
	if (bOnGameThread)
	{
		End({});
	}
	else
	{
		FHttpThread::Get().Start(shared_from_this());
	}
	return false;
}

FString FHttpRequest::Prepare()
{
	if (UrlText.IsEmpty())
	{
		return TEXT("it has no URL");
	}
	if (!RequestHeaders::IsToken(Verb))
	{
		return TEXT("the verb cannot be sent");
	}
	if (bTimedOut)
	{
		return TEXT("it ran out of time before");
	}
	if (!OpenBody())
	{
		return TEXT("the file that is to be sent cannot be read");
	}
	if (Verb == "GET" && GetContentLength() > 0)
	{
		return TEXT("a GET has no body");
	}
	return RequestHeaders::FindFault(Headers, Body && Body->IsStream());
}

bool FHttpRequest::OpenBody()
{
	if (ContentStream.IsValid())
	{
		Body = FRequestBody::FromStream(ContentStream.ToSharedRef());
	}
	else if (ContentFile)
	{
		Body = FRequestBody::FromFile(*ContentFile);
		return Body != nullptr;
	}
	else if (!Content.IsEmpty())
	{
		Body = FRequestBody::FromBytes(Content);
		const bool bNeedsType = (Verb == "POST" || Verb == "DELETE") && Headers.Get(TEXT("Content-Type")).IsEmpty();
		HOST_CHECK(!bNeedsType || std::all_of(Content.begin(), Content.end(), &Text::IsUnreserved));
	}
	return true;
}

uint64 FHttpRequest::GetContentLength() const
{
	if (ContentFile || ContentStream.IsValid())
	{
		return Body ? Body->GetSize() : 0;
	}
	return static_cast<uint64>(Content.Num());
}

bool FHttpRequest::MayChange() const
{
	if (bProcessing)
	{
		UE_LOG(LogHttp, Warning, TEXT("A request that runs cannot be changed or started again"));
	}
	return !bProcessing;
}

void FHttpRequest::SetVerb(const FString& InVerb)
{
	if (MayChange())
	{
		Verb = Text::ToUtf8(InVerb.ToUpper());
	}
}

void FHttpRequest::SetURL(const FString& InURL)
{
	if (MayChange())
	{
		UrlText = EffectiveURL = InURL;
	}
}

void FHttpRequest::SetHeader(const FString& HeaderName, const FString& HeaderValue)
{
	if (MayChange())
	{
		Headers.Set(HeaderName, HeaderValue);
	}
}

void FHttpRequest::DropBody()
{
	Content.Empty();
	ContentFile.reset();
	ContentStream.Reset();
}

void FHttpRequest::SetContent(TArray<uint8>&& ContentPayload)
{
	if (MayChange())
	{
		DropBody();
		Content = std::move(ContentPayload);
	}
}

void FHttpRequest::SetContentAsString(const FString& ContentString)
{
	const std::string Bytes = Text::ToUtf8(ContentString);
	TArray<uint8> Array;
	Array.Append(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
	SetContent(std::move(Array));
}

bool FHttpRequest::SetContentAsStreamedFile(const FString& Filename)
{
	const bool bChanges = MayChange();
	if (bChanges)
	{
		DropBody();
		ContentFile = Filename;
	}
	return bChanges;
}

bool FHttpRequest::SetContentFromStream(TSharedRef<FArchive, ESPMode::ThreadSafe> Stream)
{
	const bool bChanges = MayChange();
	if (bChanges)
	{
		DropBody();
		ContentStream = Stream;
	}
	return bChanges;
}

bool FHttpRequest::SetResponseBodyReceiveStream(TSharedRef<FArchive> Stream)
{
	const bool bChanges = MayChange();
	if (bChanges)
	{
		ResponseStream = Stream;
	}
	return bChanges;
}

bool FHttpRequest::SetResponseBodyReceiveStreamDelegateV2(FHttpRequestStreamDelegateV2 StreamDelegate)
{
	const bool bChanges = MayChange();
	if (bChanges)
	{
		ResponseStreamDelegate = std::move(StreamDelegate);
	}
	return bChanges;
}

void FHttpRequest::SetTimeout(float InTimeoutSecs)
{
	if (MayChange())
	{
		TimeoutSeconds = InTimeoutSecs;
	}
}

void FHttpRequest::SetActivityTimeout(float InTimeoutSecs)
{
	if (MayChange())
	{
		ActivityTimeoutSeconds = InTimeoutSecs;
	}
}

void FHttpRequest::SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy InThreadPolicy)
{
	if (MayChange())
	{
		Policy = InThreadPolicy;
	}
}

void FHttpRequest::CancelRequest()
{
	if (bProcessing && !bCancelled.exchange(true))
	{
		FHttpThread::Get().Cancel(shared_from_this());
	}
}
