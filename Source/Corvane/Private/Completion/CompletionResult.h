#pragma once

#include "Completion/GameThreadDelivery.h"
#include "Interfaces/IHttpResponse.h"

/** What a response becomes for its receiver; the request's ID is still to be set. Thread: request worker. */
namespace CorvaneResult
{
	/** Text, lines, headers, status and bytes of an exchange that happened. */
	FCorvCompletion success(const IHttpResponse& response);

	/** The same without body. */
	FCorvCompletion successWithoutBody(const IHttpResponse& response);

	/**
	 * An exchange that did not happen, or an answer that must not pass for a success.
	 * @param response  its code and text are used when it has an error code (400 and above); may be null.
	 */
	FCorvCompletion failure(const FHttpResponsePtr& response);

	/** The text cut at CR LF, empty lines dropped. */
	TArray<FString> toLines(const FString& text);
} // namespace CorvaneResult
