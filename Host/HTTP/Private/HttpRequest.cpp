#include "HttpRequest.h"

#include "HttpThread.h"
#include "Text.h"

bool FHttpRequest::ProcessRequest()
{
	if (bStarted.exchange(true))
	{
		UE_LOG(LogHttp, Error, TEXT("A request can be started only once"));
		return false;
	}
	Outgoing = Prepare();
	const bool bPrepared = Outgoing.has_value(); // the HTTP thread may take it at once
	return FHttpThread::Get().Start(shared_from_this()) && bPrepared;
}

void FHttpRequest::SetContentAsString(const FString& ContentString)
{
	const std::string Bytes = Text::ToUtf8(ContentString);
	TArray<uint8> Array;
	Array.Append(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
	SetBody(FRequestBody::FromBytes(std::move(Array)));
}

bool FHttpRequest::SetContentAsStreamedFile(const FString& Filename)
{
	SetBody(FRequestBody::FromFile(Filename));
	return Body != nullptr;
}

void FHttpRequest::SetBody(std::shared_ptr<FRequestBody> InBody)
{
	Body = std::move(InBody);
	ContentLength = Body ? Body->GetSize() : 0;
}

std::optional<FOutgoing> FHttpRequest::Prepare()
{
	std::string VerbBytes = Text::ToUtf8(Verb);
	if (!RequestHeaders::IsToken(VerbBytes))
	{
		UE_LOG(LogHttp, Error, TEXT("Request refused: the verb cannot be sent"));
		return std::nullopt;
	}
	std::optional<FUrl> Parsed = FUrl::Parse(Url);
	if (!Parsed)
	{
		UE_LOG(LogHttp, Error, TEXT("Request refused: not a valid http or https URL"));
		return std::nullopt;
	}
	const bool bBodyBeginsInHeader = MoveHeaderTextToBody();
	std::optional<FHeaderList> Wire = Headers.ToWire();
	if (!Wire)
	{
		return std::nullopt;
	}
	const FString Announced = Headers.Get(TEXT("Content-Length"));
	const bool bLengthIsTrue = Announced.IsEmpty() || Text::ToUtf8(Announced) == std::to_string(ContentLength);
	return FOutgoing{std::move(VerbBytes), std::move(*Parsed), std::move(*Wire), std::move(Body), bLengthIsTrue, bBodyBeginsInHeader};
}

bool FHttpRequest::MoveHeaderTextToBody()
{
	std::optional<std::string> Head = Body ? Headers.SplitContentLength() : std::nullopt;
	if (!Head)
	{
		return false;
	}
	SetBody(FRequestBody::Joined(std::move(*Head) + "\r\n\r\n", std::move(Body)));
	return true;
}

void FHttpRequest::CancelRequest()
{
	if (bStarted)
	{
		FHttpThread::Get().Cancel(shared_from_this());
	}
}

const FHttpResponsePtr FHttpRequest::GetResponse() const
{
	const std::scoped_lock Lock(Mutex);
	return Response;
}

void FHttpRequest::PublishResponse(TSharedPtr<FHttpResponse> InResponse)
{
	const std::scoped_lock Lock(Mutex);
	Response = InResponse;
}

bool FHttpRequest::NoteProgress(uint64 Sent, uint64 Received)
{
	const std::scoped_lock Lock(Mutex);
	BytesSent = Sent;
	BytesReceived = Received;
	return !std::exchange(bProgressArranged, true);
}

void FHttpRequest::RunProgress()
{
	uint64 Sent, Received;
	{
		const std::scoped_lock Lock(Mutex);
		bProgressArranged = false;
		Sent = BytesSent;
		Received = BytesReceived;
	}
	ProgressDelegate.ExecuteIfBound(Self(), Sent, Received);
}

void FHttpRequest::RunComplete(FHttpResponsePtr Shown, bool bSucceeded)
{
	ProgressDelegate.Unbind();
	const FHttpRequestCompleteDelegate Taken = std::exchange(CompleteDelegate, {});
	Taken.ExecuteIfBound(Self(), Shown, bSucceeded);
}

FHttpRequestPtr FHttpRequest::Self()
{
	return FHttpRequestRef(shared_from_this());
}
