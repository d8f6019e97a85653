#pragma once

#include "CoreMinimal.h"

/** Why a request failed. */
enum class EHttpFailureReason : uint8
{
	None = 0,
	ConnectionError, // no way to the server, or silence for too long
	Cancelled,
	TimedOut, // the limit for the whole request
	Other
};

/** What requests and responses have in common. */
class IHttpBase
{
public:
	virtual ~IHttpBase() = default;

	/** @return None before the end, and after a success. */
	virtual EHttpFailureReason GetFailureReason() const = 0;
	/** @return where redirects led, from the end on; until then, and without one, the address that was asked for. */
	virtual const FString& GetEffectiveURL() const = 0;

	/** @return the value of a header, empty when absent; the name's case is ignored. Response: nothing before the end. */
	virtual FString GetHeader(const FString& HeaderName) const = 0;
	/** @return every header as "Name: value", in the order in which the names came. Response: nothing before the end. */
	virtual TArray<FString> GetAllHeaders() const = 0;
	/**
	 * Request: bytes of the body; of a streamed file only while it is open. Response: value of the Content-Length header,
	 * 0 when there is none.
	 */
	virtual uint64 GetContentLength() const = 0;
	/**
	 * Request: the in-memory body. Response: the array that received bytes are appended to. While the request runs it grows
	 * and moves, with no lock: only a callback on the HTTP thread may look at it.
	 */
	virtual const TArray<uint8>& GetContent() const = 0;
};
