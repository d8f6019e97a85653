#pragma once

#include "CorvaneBPLibrary.h"

/** How requests end that are not started: always with 400, and once for each. Thread: game thread. */
namespace CorvaneRefusal
{
	/** By a builder: broadcasts inside the call, unless the request is a step that follows another. @return 400. */
	int32 atOnce(const FString& requestID);

	/** The same for a Drive file that has no identifier. */
	int32 ofDriveFile(const FString& downloadID, const FString& requestID);

	/** By a builder whose node or event is told one task later. @param node  null = the event. */
	void oneTaskLater(UAsyncNodeCorv* node, const FString& requestID);

	/** By the dispatcher: ends a run that was announced to scripts by its builder and cannot be started after all. */
	void ofRun(const FhttpRequest& record);
} // namespace CorvaneRefusal
