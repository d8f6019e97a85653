#pragma once

#include "CorvaneBPLibrary.h"
#include "Interfaces/IHttpResponse.h"

class FCorvRun;

/** What a request for a Drive file, its information or a file page is about, as its builder has decided. */
struct FCorvPagePlan
{
	FString downloadID; // names the Drive file
	int32 multiStepDownload = 0; // above 0: a step of a request that takes more than one exchange
	EMultiStepType multiStepDownloadType = EMultiStepType::E_GOOGLE_DRIVE_DOWNLOAD;
	int64 HTMLFileSize = 0; // bytes, as a page showed it or the script knows it; 0 = unknown
};

/**
 * A request that goes through a page: the page is fetched first, and the address that it leads to second, by a request of
 * its own. Request worker.
 */
class FCorvPageRequest
{
public:
	explicit FCorvPageRequest(FCorvRun& run);

	/** Set before the start. */
	FCorvPagePlan plan;

	/** Whether a page on the way to the file is behind this request, and the file itself comes. */
	bool isSecondStep() const;

	/** Ends the run with the second step, or with what came of the request. */
	void complete(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);
	/** Ends the run with what the page tells about a Drive file. */
	void completeFileInfo(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);

	/**
	 * The address that a page leads to; reads the size that the page shows when none is known yet.
	 * @param html  the page as text.
	 * @param url  that of the page.
	 * @return for a Drive page url and the confirmation token, which may be empty; for a file page the link.
	 */
	FString generateURLFromHTML(const FString& html, const FString& url);

private:
	bool findSecondStep(const IHttpResponse& response, FString& url);

	FCorvRun& run;
};
