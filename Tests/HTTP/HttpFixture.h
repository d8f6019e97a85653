#pragma once

#include "Host/HttpService.h"
#include "HttpModule.h"
#include "LogCapture.h"
#include "RawServer.h"
#include "TextSupport.h"
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

	struct Record
	{
		std::vector<Progress> progress;
		int completions = 0;
		bool over = false;
		bool succeeded = false;
		bool progressAfterCompletion = false;
		std::thread::id completionThread;
		FHttpResponsePtr response; // as the completion callback was given it
	};

	explicit Exchange(const std::string& url, Policy policy = Policy::CompleteOnHttpThread);

	IHttpRequest& request() const { return *Request; }
	bool start();
	/** Called in each progress callback; set before the start. */
	std::function<void(IHttpRequest&)> onProgress;

	// All of these may be asked on any thread.
	Record record() const;
	bool completed() const { return record().completions > 0; }
	bool succeeded() const { return record().succeeded; }
	std::vector<Progress> progress() const { return record().progress; }
	uint64 received() const;

	/** What the completion callback was given; null, 0 and empty when there was none. */
	FHttpResponsePtr response() const { return record().response; }
	int code() const;
	std::string body() const;
	std::string header(const char* name) const;

private:
	struct Shared
	{
		std::mutex mutex;
		Record record;
	};

	FHttpRequestRef Request;
	std::shared_ptr<Shared> Seen = std::make_shared<Shared>();
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

	/** @param verb  null = as the request has it by itself. */
	Exchange& make(const std::string& url, const char* verb = nullptr, Policy policy = Policy::CompleteOnHttpThread);
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

/** Bytes that are read as a file is; notes where it is asked. */
class BytesArchive : public FArchive
{
public:
	/** @param inBreaksAt  reading beyond it is an error. */
	explicit BytesArchive(std::string inBytes, size_t inBreaksAt = std::string::npos)
		: bytes(std::move(inBytes))
		, breaksAt(inBreaksAt)
	{
	}
	int64 TotalSize() override { return note(static_cast<int64>(bytes.size())); }
	int64 Tell() override { return note(static_cast<int64>(position)); }
	void Seek(int64 to) override { position = static_cast<size_t>(note(to)); }
	void Serialize(void* value, int64 length) override
	{
		position += bytes.copy(static_cast<char*>(value), static_cast<size_t>(note(length)), position);
		if (position > breaksAt)
		{
			SetError();
		}
	}
	bool askedOnlyElsewhere = true;

private:
	int64 note(int64 value)
	{
		askedOnlyElsewhere &= std::this_thread::get_id() != home;
		return value;
	}
	const std::thread::id home = std::this_thread::get_id();
	const std::string bytes;
	const size_t breaksAt;
	size_t position = 0;
};
