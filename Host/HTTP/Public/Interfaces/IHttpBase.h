#pragma once

#include "CoreMinimal.h"

/** What requests and responses have in common. */
class IHttpBase
{
public:
	virtual ~IHttpBase() = default;

	/** @return the value of a header, empty when absent; the name's case is ignored. */
	virtual FString GetHeader(const FString& HeaderName) const = 0;
	/** @return every header as "Name: value", in the order of the wire (requests: in the order set). */
	virtual TArray<FString> GetAllHeaders() const = 0;
	/** Request: bytes of the body. Response: value of the Content-Length header, 0 when there is none. */
	virtual uint64 GetContentLength() const = 0;
	/**
	 * Request: the in-memory body. Response: the bytes received so far, frozen at the moment of the call; it costs no
	 * copy, and the reference holds until the same thread asks this response again.
	 * @note Thread: any.
	 */
	virtual const TArray<uint8>& GetContent() const = 0;
};
