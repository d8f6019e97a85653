#pragma once

#include "Interfaces/IHttpResponse.h"
#include "Serialization/Archive.h"

class IHttpRequest;

using FHttpRequestPtr = TSharedPtr<IHttpRequest, ESPMode::ThreadSafe>;
using FHttpRequestRef = TSharedRef<IHttpRequest, ESPMode::ThreadSafe>;

/** request, response (null when no header came), whether an exchange happened (also true for 404 and 500) */
using FHttpRequestCompleteDelegate = TDelegate<void(FHttpRequestPtr, FHttpResponsePtr, bool)>;
/** request, bytes of the bodies sent and received */
using FHttpRequestProgressDelegate64 = TDelegate<void(FHttpRequestPtr, uint64, uint64)>;
using FHttpRequestStatusCodeReceivedDelegate = TDelegate<void(FHttpRequestPtr, int32)>;
using FHttpRequestHeaderReceivedDelegate = TDelegate<void(FHttpRequestPtr, const FString&, const FString&)>;
/** Takes received bytes; a length that it changes ends the transfer as failed. */
using FHttpRequestStreamDelegateV2 = TDelegate<void(void*, int64&)>;

/** Where a request's progress and completion run. */
enum class EHttpRequestDelegateThreadPolicy : uint8
{
	CompleteOnGameThread = 0,
	CompleteOnHttpThread
};

/**
 * One HTTP request, from CreateRequest. While it runs, setters do nothing but warn. Callbacks of one request come in order
 * and never overlap; completion is the last one and comes exactly once for each ProcessRequest.
 */
class IHttpRequest : public IHttpBase
{
public:
	/** GET, HEAD, POST, PUT, PATCH, DELETE and, other than in the engine, OPTIONS, TRACE and CONNECT. */
	virtual void SetVerb(const FString& Verb) = 0;
	virtual void SetURL(const FString& URL) = 0;
	/**
	 * A header of the same name (case ignored) is replaced and keeps its place; one without a value is not sent. Control
	 * characters fail the request, but for one case: a Content-Length of a number, an empty line and more text, in a request
	 * whose body is a stream. It goes out as it is, so the body begins in it. Such a request follows no redirect, and its
	 * connection is not used again.
	 */
	virtual void SetHeader(const FString& HeaderName, const FString& HeaderValue) = 0;
	/** The body, which is taken over. */
	virtual void SetContent(TArray<uint8>&& ContentPayload) = 0;
	/** The body, as UTF-8. */
	virtual void SetContentAsString(const FString& ContentString) = 0;
	/** The body is that of a file, which ProcessRequest opens. @return false while the request runs. */
	virtual bool SetContentAsStreamedFile(const FString& Filename) = 0;
	/** The body is read from an archive, on the HTTP thread, once. @return false while the request runs. */
	virtual bool SetContentFromStream(TSharedRef<FArchive, ESPMode::ThreadSafe> Stream) = 0;
	/** Received bytes go to an archive, on the HTTP thread, and not to the response. @return false while the request runs. */
	virtual bool SetResponseBodyReceiveStream(TSharedRef<FArchive> Stream) = 0;
	/** The same with a delegate. */
	virtual bool SetResponseBodyReceiveStreamDelegateV2(FHttpRequestStreamDelegateV2 StreamDelegate) = 0;
	/** Seconds for the whole request; none by default. */
	virtual void SetTimeout(float InTimeoutSecs) = 0;
	/** Seconds without a byte, once the connection stands. */
	virtual void SetActivityTimeout(float InTimeoutSecs) = 0;
	virtual void SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy InThreadPolicy) = 0;

	virtual FHttpRequestCompleteDelegate& OnProcessRequestComplete() = 0;
	/**
	 * On the HTTP thread: after each received block of the body and once at the end, when a count has changed. On the game
	 * thread: once a tick, also while bytes are sent.
	 */
	virtual FHttpRequestProgressDelegate64& OnRequestProgress64() = 0;
	/** Each status line but those of 3xx. Thread: HTTP thread. */
	virtual FHttpRequestStatusCodeReceivedDelegate& OnStatusCodeReceived() = 0;
	/** Each header line but those of 3xx. Thread: HTTP thread. */
	virtual FHttpRequestHeaderReceivedDelegate& OnHeaderReceived() = 0;

	/**
	 * Starts the request.
	 * @return false when it cannot be sent (bad URL or header, a GET with a body, a file that cannot be read). It completes
	 * as failed all the same: on the HTTP thread, or inside this call when its callbacks run on the game thread.
	 */
	virtual bool ProcessRequest() = 0;
	/** Ends a running request as failed, later and through the same completion; harmless when it is over. Thread: any. */
	virtual void CancelRequest() = 0;
	/** @return null before the first header line, and after a failed completion. Thread: that of the callbacks. */
	virtual const FHttpResponsePtr GetResponse() const = 0;
};
