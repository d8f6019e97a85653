#pragma once

#include "CorvaneBPLibrary.h"

/**
 * Bodies that are sent as streams of the module's own: each portion that one hands out is upload progress, and it is read
 * but once, so nothing is sent a second time. Thread: game thread.
 */
namespace CorvaneUpload
{
	/** The body of a record's request is these bytes. */
	void sendBytes(const FhttpRequest& record, TArray<uint8> bytes, IHttpRequest& httpRequest);

	/**
	 * The body of a record's request is a file, of which a portion at a time is in memory.
	 * @param path  full.
	 * @return false when it cannot be read: sent without its file, a request could empty what the server holds.
	 */
	bool sendFile(const FhttpRequest& record, const FString& path, IHttpRequest& httpRequest);
} // namespace CorvaneUpload
