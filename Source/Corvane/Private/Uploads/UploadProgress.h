#pragma once

#include "CoreMinimal.h"
#include "Serialization/Archive.h"
#include "Templates/SharedPointer.h"

class FCorvRun;

/** How much of an upload's body is on its way. */
class FCorvUploadProgress
{
public:
	explicit FCorvUploadProgress(FCorvRun& inRun)
		: run(inRun)
	{
	}

	/** Bytes of the body; 0 = the request has none of the module's own. Set before the start. */
	uint64 uploadSize = 0;

	/** The request's stream that carries the body, if it is the module's own. Set before the start. */
	TWeakPtr<FArchive, ESPMode::ThreadSafe> body;

	/** A run begins. Thread: game thread. */
	void begin()
	{
		uploadSent = 0;
		bBroken = false;
	}
	/** The body could not be read to its end: what was sent is not it. Thread: HTTP callback. */
	void setBroken() { bBroken = true; }
	bool isBroken() const { return bBroken; }
	/**
	 * The request has ended. Who knows how long the HTTP layer holds it: a file that the body still had open could not be repaired.
	 * Thread: HTTP callback.
	 */
	void closeBody()
	{
		if (const TSharedPtr<FArchive, ESPMode::ThreadSafe> Held = body.Pin())
		{
			Held->Close();
		}
	}
	/** @param bytesSent  as the body or the HTTP layer tells it, in any order. Thread: request worker. */
	void report(uint64 bytesSent);
	/** Tells the log when an answer asks for the body once more, elsewhere. Thread: request worker. */
	void tellIfSentOn(int32 statusCode) const;

private:
	FCorvRun& run;
	uint64 uploadSent = 0;
	bool bBroken = false; // of the thread of the HTTP callbacks while the run goes on
};
