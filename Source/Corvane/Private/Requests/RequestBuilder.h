#pragma once

#include "CorvaneBPLibrary.h"

/** The steps that the builders have in common; each builder keeps its own order. Thread: game thread. */
namespace CorvaneBuilder
{
	/** @return the caller's ID, or a new GUID of 32 upper-case hexadecimal digits when it is empty. */
	FString idOrNew(const FString& optionalRequestID);

	/** @return false for a URL of fewer than 3 characters, which is logged. */
	bool isUrlLongEnough(const FString& url);

	/** @return a record without its completion object. */
	FhttpRequest makeRecord(EHTTPCorvRequestType type, FString url, TMap<FString, FString> header = {});

	/**
	 * Gives a filled record its completion object and puts it after the other records.
	 * @return the completion object, so that the builder can set what else it needs.
	 */
	UCorvaneRequestCompleteObject* append(
		FhttpRequest&& record, const FString& requestID, TArray<FhttpRequest>& otherHttpRequests, TArray<FhttpRequest>& httpRequests);

	/**
	 * The whole of a builder that checks nothing but the URL.
	 * @param record  filled, but for its completion object.
	 * @param requestID  takes the ID, also when the request is refused.
	 * @return 0, or 400 when it was refused.
	 */
	int32 checkAndAppend(FhttpRequest&& record, const FString& optionalRequestID, TArray<FhttpRequest>& otherHttpRequests,
		TArray<FhttpRequest>& httpRequests, FString& requestID);
} // namespace CorvaneBuilder
