#pragma once

#include "Downloads/Download.h"

/** What tells one version of a file on a server from the next, as an answer gave it; empty and 0 = not told. */
struct FCorvFileVersion
{
	FString eTag;
	FString lastModified;
	int64 total = 0; // bytes
};

/** What a step hands on to the next; copies only, because the step is gone by then. */
struct FCorvDownloadStep
{
	FString path; // full
	FCorvDownloadPlan plan; // of the next step
	FCorvFileVersion version;
	FCorvSpeed speed;
	int64 download = 0; // the number under which the first step has claimed the file
};

/**
 * A download in steps: a question for the size, then one ranged request after the other. Each is a request of its own, and
 * this is what one of them is about. Request worker, unless a function says otherwise.
 */
class FCorvSteppedDownload
{
public:
	/** @param run, download  of the same request. */
	FCorvSteppedDownload(FCorvRun& run, FCorvDownload& download);

	/** Goes on where the step before has ended. Thread: game thread, before the start. */
	void continueFrom(FCorvDownloadStep step);
	/** A run begins. Thread: game thread. */
	void begin() { bTooMuchCame = false; }

	/** Ends the run with the next step, or with what came of the download. */
	void complete(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);

	/** Reports progress over the whole file, and ends a transfer that brings more than was asked for. */
	void report(IHttpRequest& request, uint64 bytesReceived);

private:
	void takeProbeAnswer(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	void takeStepAnswer(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	void takeBrokenAnswer(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	bool writeStep(const IHttpResponse& response, const FCorvDownloadAnswer& answer);
	void startStep(const IHttpResponse& response, int64 total, int64 start);
	void end(const FHttpRequestPtr& request, FCorvCompletion result);
	void deliver(const FHttpRequestPtr& request, FCorvCompletion result);
	int64 mostBytes() const;

	FCorvRun& run;
	FCorvDownload& download;
	FCorvFileVersion version; // as the step before saw it
	bool bTooMuchCame = false; // the answer was cut off
};
