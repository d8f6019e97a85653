#pragma once

#include "Interfaces/IHttpResponse.h"
#include "Runs/Delivery.h"

/** What a response becomes for its receiver; the request's ID is still to be set. Thread: request worker. */
namespace CorvaneResult
{
	/** Text, lines, headers, status and bytes of an exchange that happened. */
	FCorvCompletion success(const IHttpResponse& response, TArray<uint8> body);

	/** The same without body. */
	FCorvCompletion successWithoutBody(const IHttpResponse& response);

	/** What a server said when it refused. */
	FCorvCompletion refusal(int32 statusCode, FString text);

	/** An exchange that did not happen, or an answer that must not pass for a success. */
	FCorvCompletion noResponse();

	/** Empty, with a line in the log, for more than 512 MiB. */
	FString toText(const TArray<uint8>& utf8);

	/** The text cut at CR LF, empty lines dropped; none, with a line in the log, of more than 64 MiB or 1,000,000 lines. */
	TArray<FString> toLines(const FString& text);
} // namespace CorvaneResult
