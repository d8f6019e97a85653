#pragma once

#include "HttpRequest.h"

#include <chrono>
#include <curl/curl.h>
#include <string>
#include <vector>

struct FHttpSettings;

/** What all transfers share in one round of the HTTP thread. */
struct FRound
{
	std::chrono::steady_clock::time_point Now;
	std::vector<FTransfer*> Dirty; // have counts to report
};

/** One request on its way through libcurl, hop by hop; used again for the next request. Thread: HTTP thread. */
class FTransfer
{
public:
	/** Both arguments outlive the transfer. */
	FTransfer(FRound& InRound, const FHttpSettings& InSettings);
	~FTransfer() { curl_easy_cleanup(Easy); }
	FTransfer(const FTransfer&) = delete;
	FTransfer& operator=(const FTransfer&) = delete;

	CURL* Handle() const { return Easy; }
	static FTransfer& Of(CURL* Handle);

	/** Takes a request whose Outgoing is set, and prepares its first hop. */
	void Begin(std::shared_ptr<FHttpRequest> InRequest);
	/** Prepares the hop that the last answer leads to. @return false when it leads nowhere else. */
	bool BeginNextHop();
	/** Lets go of the request and of all that belongs to it. */
	std::shared_ptr<FHttpRequest> Release();

	/** @return what went wrong, or null when the exchange is complete. */
	const char* Outcome(CURLcode Result) const;
	/** Whether no byte moved for too long; connecting has a limit of its own. */
	bool IsStalled() const;

	const std::shared_ptr<FHttpRequest>& GetRequest() const { return Request; }
	/** Whether enough time has passed since the last progress callback for another one. */
	bool IsProgressDue() const { return Round.Now - LastProgress >= std::chrono::milliseconds(1); }
	/** Bytes of the bodies of this hop so far. */
	struct FProgress
	{
		uint64 Sent, Received;
	};
	/** Whether bytes moved since the last report. */
	bool IsDirty() const { return bDirty; }
	/** Ends this transfer's stay in the dirty list. */
	FProgress TakeProgress();

	size_t Index = 0; // place among the running transfers
	bool bEnded = false;
	bool bSucceeded = false;

private:
	void BeginHop();
	void ConfigureHandle();
	void ConfigureVerb();
	void ConfigureBody();
	bool OnHeaderLine(std::string_view Line);
	bool OnHeadersComplete();
	bool OnBody(const char* Bytes, size_t Number);
	size_t OnReadBody(char* Buffer, size_t Room);
	int OnSeekBody(int64 Offset, int Origin);
	void NoteProgress();
	void Touch() { LastActivity = Round.Now; }

	FRound& Round;
	const FHttpSettings& Settings;
	CURL* const Easy;
	char ErrorText[CURL_ERROR_SIZE] = "";

	std::shared_ptr<FHttpRequest> Request;
	std::optional<FOutgoing> Hop;
	std::optional<FOutgoing> Next; // where the answer that is coming in leads to
	int32 HopsFollowed = 0;
	const char* Problem = nullptr; // why a callback ended the transfer

	FResponseHeaders Headers;
	TSharedPtr<FHttpResponse> Response; // of the last hop
	uint64 HeaderBytes = 0; // of all hops
	uint64 BodyBytes = 0; // received in this hop
	uint64 BytesSent = 0; // of the body, in this hop
	bool bConnected = false;
	bool bDirty = false;
	std::chrono::steady_clock::time_point LastActivity;
	std::chrono::steady_clock::time_point LastProgress;
};
