#pragma once

#include "Interfaces/IHttpResponse.h"

class IHttpRequest;

using FHttpRequestPtr = TSharedPtr<IHttpRequest, ESPMode::ThreadSafe>;
using FHttpRequestRef = TSharedRef<IHttpRequest, ESPMode::ThreadSafe>;

/** request, response (null when the exchange failed), whether an exchange happened (also true for 404 and 500) */
using FHttpRequestCompleteDelegate = TDelegate<void(FHttpRequestPtr, FHttpResponsePtr, bool)>;
/** request, bytes sent, bytes received (both counted from the start of the request's last hop) */
using FHttpRequestProgressDelegate64 = TDelegate<void(FHttpRequestPtr, uint64, uint64)>;

/** Where a request's callbacks run. */
enum class EHttpRequestDelegateThreadPolicy : uint8
{
	CompleteOnGameThread = 0,
	CompleteOnHttpThread
};

/**
 * One HTTP request, from CreateRequest. It is set up and started on one thread and not changed after that. Callbacks of
 * one request come in order and never overlap; completion is the last one and comes exactly once.
 */
class IHttpRequest : public IHttpBase
{
public:
	virtual void SetVerb(const FString& Verb) = 0;
	virtual void SetURL(const FString& URL) = 0;
	/**
	 * A header of the same name (case ignored) is replaced and keeps its place. Control characters in a header fail the
	 * request, but for one case: a Content-Length of a number, an empty line and more text, in a request that has a body.
	 * The number is sent as the last header; the text and another empty line go in front of the body, whatever the number
	 * says. Such a request uses HTTP/1.1, follows no redirect, and its connection is not used again.
	 */
	virtual void SetHeader(const FString& HeaderName, const FString& HeaderValue) = 0;
	/** The body, which is taken over. */
	virtual void SetContent(TArray<uint8>&& ContentPayload) = 0;
	/** The body, as UTF-8. An empty one of a verb that needs no body sends none. */
	virtual void SetContentAsString(const FString& ContentString) = 0;
	/**
	 * The body is read from a file while it is sent, and only as far as the file reaches now.
	 * @return false when the file cannot be opened.
	 */
	virtual bool SetContentAsStreamedFile(const FString& Filename) = 0;
	virtual void SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy Policy) = 0;

	virtual FHttpRequestCompleteDelegate& OnProcessRequestComplete() = 0;
	/** At most one call per millisecond, with the latest counts; one precedes completion when bytes moved. */
	virtual FHttpRequestProgressDelegate64& OnRequestProgress64() = 0;

	/**
	 * Starts the request. A request that cannot be sent (bad URL, bad header) completes as failed like any other;
	 * no callback comes inside this call.
	 * @return false when the request cannot be sent.
	 */
	virtual bool ProcessRequest() = 0;
	/** Ends a running request as failed, later and through the same completion; harmless when it is over. Thread: any. */
	virtual void CancelRequest() = 0;
	/**
	 * @return null until a status line arrived; after a failed or cancelled exchange it holds what was received.
	 * @note Thread: any.
	 */
	virtual const FHttpResponsePtr GetResponse() const = 0;
};
