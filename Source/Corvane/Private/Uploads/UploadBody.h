#pragma once

#include "CorvaneBPLibrary.h"

/**
 * Bodies that are sent as streams of the module's own. The HTTP layer tells nothing while it sends, so the stream does:
 * each portion that it hands out is upload progress. And it can be read but once, so nothing is ever sent a second time
 * behind the back of the script. Thread: game thread.
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
