#pragma once

#include "Host/HttpService.h"
#include "HttpModule.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <atomic>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <mutex>
#include <set>
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
		uint64 sent, received;
	};

	struct Record
	{
		std::vector<Progress> progress;
		int completions = 0;
		bool succeeded = false;
		std::set<std::thread::id> threads; // of all callbacks
		FHttpResponsePtr response; // as the completion callback was given it
	};

	Exchange(const std::string& url, Policy policy);

	IHttpRequest& request() const { return *Request; }
	bool start()
	{
		++Starts;
		return Request->ProcessRequest();
	}
	/** Called in each progress callback; set before the start. */
	std::function<void(IHttpRequest&)> onProgress;

	// All of these may be asked on any thread.
	Record record() const
	{
		const std::scoped_lock lock(Mutex);
		return Seen;
	}
	int starts() const { return Starts; }
	bool completed() const { return record().completions > 0; }
	bool succeeded() const { return record().succeeded; }
	std::vector<Progress> progress() const { return record().progress; }
	uint64 received() const { return progress().empty() ? 0 : progress().back().received; }

	/** What the completion callback was given; null, 0 and empty when there was none. */
	FHttpResponsePtr response() const { return record().response; }
	int code() const { return response() ? response()->GetResponseCode() : 0; }
	std::string body() const { return response() ? bytesOf(response()->GetContent()) : ""; }

private:
	mutable std::mutex Mutex;
	Record Seen;
	std::atomic<int> Starts{0};
	FHttpRequestRef Request;
};

/**
 * Runs the HTTP service with short time limits. At the end of a test it stops the service and checks of every request
 * made here that each start had exactly one completion; nothing may be reported after that.
 */
class HttpTest : public ::testing::Test
{
protected:
	HttpTest();
	~HttpTest() override;

	/** Starts the service again with the settings as they are now. */
	void restart()
	{
		HttpService::Stop();
		HttpService::Start(Settings);
	}

	/** @param verb  null = as the request has it by itself. */
	Exchange& make(const std::string& url, const char* verb = nullptr, Policy policy = Policy::CompleteOnHttpThread)
	{
		Exchange& made = Exchanges.emplace_back(url, policy);
		verb ? made.request().SetVerb(verb) : void();
		return made;
	}
	/** Starts a request and waits for its completion. */
	Exchange& run(Exchange& exchange)
	{
		exchange.start();
		pumpUntil([&] { return exchange.completed(); });
		return exchange;
	}
	Exchange& get(const std::string& url) { return run(make(url)); }

	FHttpSettings Settings;
	LogCapture Log;

private:
	std::list<Exchange> Exchanges;
};

/** Bytes as a file has them, to be read, or when there are none yet, written. */
class BytesArchive : public FArchive
{
public:
	/** @param inBreaksAt  being used beyond it is an error. */
	explicit BytesArchive(std::string inBytes, size_t inBreaksAt = std::string::npos)
		: bytes(std::move(inBytes))
		, breaksAt(inBreaksAt)
	{
	}
	int64 TotalSize() override { return static_cast<int64>(bytes.size()); }
	int64 Tell() override { return static_cast<int64>(position); }
	void Seek(int64 to) override { position = static_cast<size_t>(to); }
	void Serialize(void* value, int64 length) override
	{
		askedOnlyElsewhere &= std::this_thread::get_id() != home;
		const size_t number = static_cast<size_t>(length);
		bWrites ? void(bytes.append(static_cast<char*>(value), number)) : void(bytes.copy(static_cast<char*>(value), number, position));
		position += number;
		if (position > breaksAt)
		{
			SetError();
		}
	}

	std::string bytes;
	bool askedOnlyElsewhere = true; // on no thread but others

private:
	const bool bWrites = bytes.empty();
	const std::thread::id home = std::this_thread::get_id();
	const size_t breaksAt;
	size_t position = 0;
};
