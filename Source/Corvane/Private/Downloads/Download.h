#pragma once

#include "Downloads/TargetFile.h"
#include "Rules/DownloadRules.h"
#include "Rules/Speed.h"

/** What a download is to get, as its builder has decided. Bytes. */
struct FCorvDownloadPlan
{
	int64 start = 0; // the first byte that is asked for
	int64 stepSize = 0; // of a download in steps
	int64 fullSize = 0; // of the whole file on the server; 0 = not known
};

/**
 * What becomes of the bytes of a download, and its progress; a download that arrives as one body ends here. Whatever the
 * outcome, the file is closed before the result goes out, so that a handler may resume at once. Request worker, unless a
 * function says otherwise.
 */
class FCorvDownload
{
public:
	explicit FCorvDownload(FCorvRun& run);

	// Set before the start.
	FCorvDownloadPlan plan;
	FCorvTargetFile file;
	/** Of the step before; this one goes on with it. */
	FCorvSpeed inheritedSpeed;

	/** The last measurement of this run. */
	FCorvSpeed speed;

	/** A run begins. Thread: game thread. */
	void begin() { speed = inheritedSpeed; }

	/** Ends the run with what came of a download in one body. */
	void complete(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);

	/** What decides about the body of an answer. */
	static FCorvDownloadAnswer readAnswer(const IHttpResponse& response);

	/** Reports a body, or the part of a file that is on disk and the body after it. */
	void reportBody(uint64 bytesReceived, uint64 bodySize);
	/** Reports how much there is of the whole file. */
	void report(float total, int64 received);

private:
	FCorvCompletion writeBody(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	FCorvCompletion writePlanned(const IHttpResponse& response, const FCorvDownloadAnswer& answer, bool bReplace, bool bPartOfChoice);
	void keepReceivedBytes(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	FCorvCompletion broken(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	FCorvDownloadTarget targetOf(const FHttpRequestPtr& request) const;

	FCorvRun& run;
};
