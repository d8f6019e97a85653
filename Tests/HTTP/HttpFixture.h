#pragma once

#include "Host/HttpService.h"
#include "HttpModule.h"
#include "LogCapture.h"
#include "RawServer.h"
#include "Waiting.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
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
	};

	explicit Exchange(const std::string& url, Policy policy = Policy::CompleteOnHttpThread);

	IHttpRequest& request() const { return *Request; }
	bool start();
	/** Called in each progress callback; set before the start. */
	std::function<void(IHttpRequest&)> onProgress;

	// All of these may be asked on any thread.
	int completions() const;
	bool completed() const { return completions() > 0; }
	bool succeeded() const;
	std::thread::id completionThread() const;
	std::vector<Progress> progress() const;
	uint64 received() const;
	bool progressAfterCompletion() const;

	/** What the completion callback was given; null, 0 and empty when there was none. */
	FHttpResponsePtr response() const;
	int code() const;
	std::string body() const;
	std::string header(const char* name) const;

private:
	struct Record
	{
		std::mutex mutex;
		std::vector<Progress> progress;
		int completions = 0;
		bool over = false;
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
	/** @param starts  how often each request was started. */
	void stopAndCheck(int starts = 1);

	FHttpSettings Settings;
	LogCapture Log;

private:
	std::list<Exchange> Exchanges;
};
