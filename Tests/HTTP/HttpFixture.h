#pragma once

#include "Host/HttpService.h"
#include "HttpModule.h"
#include "LogCapture.h"
#include "RawServer.h"
#include "Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using Policy = EHttpRequestDelegateThreadPolicy;

FString text(std::string_view utf8);
std::string utf8(const FString& text);
std::string bytesOf(const TArray<uint8>& array);

/** One request with a record of its callbacks. */
class Exchange
{
public:
	struct Progress
	{
		uint64 sent;
		uint64 received;
		std::thread::id thread;
		std::chrono::steady_clock::time_point time;
	};

	explicit Exchange(const std::string& url, Policy policy = Policy::CompleteOnHttpThread);

	IHttpRequest& request() { return *Request; }
	bool start() { return Request->ProcessRequest(); }

	// All of these may be asked on any thread.
	int completions() const;
	bool completed() const { return completions() > 0; }
	bool succeeded() const;
	std::thread::id completionThread() const;
	/** What the completion callback was given. */
	FHttpResponsePtr shownResponse() const;
	std::vector<Progress> progress() const;
	bool progressAfterCompletion() const;

	/** The response that the request holds; 0 and empty when there is none. */
	int code() const;
	std::string body() const;
	std::string header(const char* name) const;

private:
	struct Record
	{
		std::mutex mutex;
		std::vector<Progress> progress;
		int completions = 0;
		bool succeeded = false;
		bool progressAfterCompletion = false;
		std::thread::id completionThread;
		FHttpResponsePtr shown;
	};

	FHttpRequestRef Request;
	std::shared_ptr<Record> Seen = std::make_shared<Record>();
};

/**
 * Runs the HTTP service with short time limits. At the end of a test it stops the service and checks of every request
 * made here that it completed exactly once, and nothing was reported after that.
 */
class HttpTest : public ::testing::Test
{
protected:
	HttpTest();
	~HttpTest() override;

	/** Starts the service again with other settings. */
	void restart(const FHttpSettings& settings);

	Exchange& make(const std::string& url, Policy policy = Policy::CompleteOnHttpThread);
	/** Starts a request and waits for its completion. */
	Exchange& run(Exchange& exchange);
	Exchange& get(const std::string& url) { return run(make(url)); }
	void stopAndCheck();

	FHttpSettings Settings;
	LogCapture Log;

private:
	std::list<Exchange> Exchanges;
};
