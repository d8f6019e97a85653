#pragma once

#include "Interfaces/IHttpBase.h"

/** The answer to a request; it may be read while it still grows. Thread: any. */
class IHttpResponse : public IHttpBase
{
public:
	/** The status code of the last hop, 0 before its status line arrived. */
	virtual int32 GetResponseCode() const = 0;
	/** The bytes received so far, read as UTF-8; what is not UTF-8 becomes U+FFFD. */
	virtual FString GetContentAsString() const = 0;
};

using FHttpResponsePtr = TSharedPtr<IHttpResponse, ESPMode::ThreadSafe>;
