#pragma once

#include "Interfaces/IHttpBase.h"

/** The answer to a request. */
class IHttpResponse : public IHttpBase
{
public:
	/** The status code; 0 before the end, and for ever when the request was cancelled or ran out of time. */
	virtual int32 GetResponseCode() const = 0;
	/** The bytes received, read as UTF-8; what is not UTF-8 becomes U+FFFD. */
	virtual FString GetContentAsString() const = 0;
};

using FHttpResponsePtr = TSharedPtr<IHttpResponse, ESPMode::ThreadSafe>;
