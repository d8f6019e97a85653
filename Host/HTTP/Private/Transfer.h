#pragma once

#include "HeadTap.h"
#include "HttpRequest.h"
#include "RequestHeaders.h"

#include <chrono>
#include <curl/curl.h>
#include <string_view>

struct FHttpSettings;

/** One request on its way through libcurl; used again for the next request. Thread: HTTP thread. */
class FTransfer
{
public:
	using FClock = std::chrono::steady_clock;

	/** @param InNow  the time of the current round. Both arguments outlive the transfer. */
	FTransfer(const FClock::time_point& InNow, const FHttpSettings& InSettings);
	~FTransfer() { curl_easy_cleanup(Easy); }
	FTransfer(const FTransfer&) = delete;
	FTransfer& operator=(const FTransfer&) = delete;

	CURL* Handle() const { return Easy; }
	static FTransfer& Of(CURL* Handle);

	/** Takes a request whose Url is set. */
	void Begin(std::shared_ptr<FHttpRequest> InRequest);
	/** Lets go of the request and of all that belongs to it. */
	std::shared_ptr<FHttpRequest> Release();

	/** How libcurl's result reads for the program; a failure goes to the log, too. */
	FHttpOutcome Judge(CURLcode Result) const;
	/** Tells, once a limit has passed, which failure that is. */
	std::optional<EHttpFailureReason> FindPassedLimit() const;
	/** Seconds; the shortest of the limits that FindPassedLimit looks at. */
	double ShortestLimit() const { return std::min(ActivityTimeout, Timeout.value_or(ActivityTimeout)); }

	size_t Index = 0; // place among the running transfers
	bool bEnded = false;
	FHttpOutcome Outcome;

private:
	void ConfigureHandle();
	void ConfigureCallbacks();
	void ConfigureVerb();
	void ConfigureBody();
	void OnRequestDue();
	bool OnHeaderLine(std::string_view Line);
	bool OnHeader(std::string_view Name, std::string_view Value);
	bool TakeLength(std::string_view Value);
	bool OnBody(char* Bytes, size_t Number);
	size_t OnReadBody(char* Buffer, size_t Room);
	int OnSeekBody(int64 Offset, int Origin);
	bool IsHidden() const { return BlockCode >= 300 && BlockCode < 400; }
	void Touch() { LastActivity = Now; }

	const FClock::time_point& Now;
	const FHttpSettings& Settings;
	CURL* const Easy;
	FHeadTap HeadTap;
	char ErrorText[CURL_ERROR_SIZE] = "";

	std::shared_ptr<FHttpRequest> Request;
	FHeaderLines Lines;
	uint64 BodySize = 0;
	double ActivityTimeout = 0;
	std::optional<double> Timeout;
	const char* Problem = nullptr; // why a callback ended the transfer

	int32 BlockCode = 0; // of the header block that is coming in, or came last
	std::optional<uint64> Length; // that it announced
	uint64 BytesSent = 0; // of the body, since it was begun last
	bool bAnswered = false; // since then
	bool bConnected = false;
	FClock::time_point Begun;
	FClock::time_point LastActivity;
};
