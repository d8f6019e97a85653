#include "Attempts/Exchange.h"
#include "Host/GameThreadTasks.h"
#include "Host/HttpService.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "TextSupport.h"
#include "Upload/BodyStream.h"
#include "Waiting.h"

#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

using End = ECorvaneExchangeEnd;
using testing::HasSubstr;

namespace
{
	/** Writes down what it is told, and stops where it is told to. */
	class Receiver : public FCorvaneExchangeReceiver
	{
	public:
		bool OnAnswer(const FCorvaneAnswer& told) override
		{
			threads.push_back(std::this_thread::get_id());
			answers.push_back(told);
			return takesAnswer;
		}
		bool OnBytes(const uint8* bytes, int64 number) override
		{
			body.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(number));
			arrived = body.size();
			return body.size() < mostBytes;
		}
		void OnEnd(const FCorvaneExchangeResult& told) override
		{
			threads.push_back(std::this_thread::get_id());
			result = told;
			++ends;
		}

		bool takesAnswer = true;
		size_t mostBytes = std::string::npos;
		std::vector<FCorvaneAnswer> answers;
		std::string body;
		FCorvaneExchangeResult result;
		std::vector<std::thread::id> threads;
		std::atomic<size_t> arrived = 0;
		std::atomic<int> ends = 0;
	};

	class Exchange : public testing::Test
	{
	protected:
		Exchange()
		{
			setenv("no_proxy", "*", 1);
			GameThreadTasks::BindToThisThread();
			HttpService::Start({});
		}
		~Exchange() override
		{
			HttpService::Stop();
			GameThreadTasks::Drop(false);
			EXPECT_EQ(receiver->ends, started) << "each start has one end";
		}

		TSharedRef<FCorvaneExchange> start(const std::string& url, float silence = static_cast<float>(patienceSeconds),
			const TSharedPtr<FCorvaneRequestBody>& sent = nullptr)
		{
			++started;
			FCorvaneExchangeRequest request;
			request.URL = text(url);
			request.Headers.Add(TEXT("Range"), TEXT("bytes=5-"));
			request.Headers.Add(TEXT("Accept-Encoding"), TEXT("gzip"));
			request.SilenceSeconds = silence;
			if (sent.IsValid())
			{
				request.Verb = TEXT("PUT");
				request.Headers.Add(TEXT("Content-Type"), TEXT("text/plain"));
				request.Stream = sent;
			}
			return FCorvaneExchange::Start(request, receiver);
		}
		const FCorvaneExchangeResult& waitForEnd()
		{
			waitFor([this] { return receiver->ends == started; });
			return receiver->result;
		}

		TSharedRef<Receiver> receiver = MakeShared<Receiver>();
		int started = 0;
	};

	const std::string partHead = "HTTP/1.1 206 Partial\r\nETag: \"v\"\r\nContent-Range: bytes 5-14/15\r\nContent-Length: 10\r\n\r\n";
} // namespace

TEST_F(Exchange, TellsTheAnswerOnceBeforeItsBytesAndWhereItCameFrom)
{
	Lab::Origin server;
	server.at("/from", "moved", Lab::redirect({.to = "/to"}), Lab::headers({{"ETag", "\"moved\""}}));
	server.at("/to", Lab::raw(partHead + "0123456789"));
	start("http://user:secret@" + server.authority() + "/from");
	EXPECT_EQ(waitForEnd().End, End::Done);
	ASSERT_EQ(receiver->answers.size(), 1u);
	EXPECT_EQ(receiver->answers[0].Code, 206);
	EXPECT_EQ(receiver->answers[0].Range.First, 5);
	EXPECT_EQ(utf8(receiver->answers[0].Version.ETag), "\"v\"");
	EXPECT_EQ(receiver->body, "0123456789");
	EXPECT_EQ(receiver->result.BodyBytes, 10);
	EXPECT_THAT(utf8(receiver->result.ReachedURL), testing::EndsWith("/to"));
	EXPECT_NE(receiver->threads.front(), std::this_thread::get_id());
	for (const Lab::Exchange& each : server.log())
	{
		EXPECT_EQ(each.request->header("Accept-Encoding"), "identity");
		EXPECT_EQ(each.request->header("Range"), "bytes=5-");
	}
}

TEST_F(Exchange, KnowsItsEnds)
{
	struct Case
	{
		const char* what;
		std::string sent;
		End end;
		int code;
		size_t bytes;
		bool whole; // the lines of the answer
	};
	const Case cases[] = {
		{"nothing to send", "HTTP/1.1 304 Same\r\n\r\n", End::Done, 304, 0, true},
		{"an empty file", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nETag: \"e\"\r\n\r\n", End::Done, 200, 0, true},
		{"a page of an error", "HTTP/1.1 404 Gone\r\nContent-Length: 4\r\n\r\ngone", End::Done, 404, 4, true},
		{"chunks and what comes behind them",
			"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\nETag: \"late\"\r\n\r\n", End::Done, 200, 3, true},
		{"a body that is too short", partHead + "01234", End::Dropped, 206, 5, true},
		{"a chunk that is too short", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc", End::Dropped, 200, 3, true},
		{"lines that break off", "HTTP/1.1 200 OK\r\nContent-Le", End::Dropped, 200, 0, false},
		{"no answer", "", End::Dropped, 0, 0, false},
		{"an interim answer alone", "HTTP/1.1 102 Processing\r\nETag: \"late\"\r\n\r\n", End::Dropped, 0, 0, false},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.what);
		Lab::Origin server;
		server.at("/", Lab::raw(each.sent));
		receiver->answers.clear();
		receiver->body.clear();
		start(server.url());
		const FCorvaneExchangeResult& result = waitForEnd();
		EXPECT_EQ(result.End, each.end);
		EXPECT_EQ(result.Answer.Code, each.code);
		EXPECT_EQ(receiver->body.size(), each.bytes);
		EXPECT_EQ(result.bAnswerIsWhole, each.whole);
		EXPECT_EQ(receiver->answers.size(), each.whole ? 1u : 0u);
		EXPECT_NE(utf8(result.Answer.Version.ETag), "\"late\"");
	}
}

TEST_F(Exchange, TellsSilenceFromNoConnectionAndNoRequest)
{
	constexpr float silence = 0.2f;
	Lab::Origin server;
	server.at("/mute", Lab::stall()).at("/stalls", Lab::raw(partHead + "01234", Lab::RawEnd::Stall));
	start(server.url("/mute"), silence);
	EXPECT_EQ(waitForEnd().End, End::Stalled);
	start(server.url("/stalls"), silence);
	EXPECT_EQ(waitForEnd().End, End::Stalled);
	EXPECT_EQ(receiver->body, "01234");
	start("http://127.0.0.1:1/");
	EXPECT_EQ(waitForEnd().End, End::NoConnection);
	start("");
	EXPECT_EQ(waitForEnd().End, End::NotSent);
}

TEST_F(Exchange, StopsWhenTheReceiverOrTheCallerWantsNoMore)
{
	Lab::Origin server;
	server.at("/", Lab::raw(partHead + "01234", Lab::RawEnd::Stall));
	receiver->takesAnswer = false;
	start(server.url());
	EXPECT_EQ(waitForEnd().End, End::StoppedByUs);
	EXPECT_EQ(receiver->body, "");

	receiver->takesAnswer = true;
	receiver->mostBytes = 5;
	start(server.url());
	EXPECT_EQ(waitForEnd().End, End::StoppedByUs);
	EXPECT_EQ(receiver->body, "01234");
	EXPECT_EQ(receiver->result.Answer.Code, 206);

	receiver->mostBytes = std::string::npos;
	const TSharedRef<FCorvaneExchange> running = start(server.url());
	waitFor([this] { return receiver->arrived == 10; });
	running->Cancel();
	EXPECT_EQ(waitForEnd().End, End::Cancelled);
	EXPECT_TRUE(receiver->result.bAnswerIsWhole);
	running->Cancel(); // harmless
	start(server.url()); // ends with the service
	waitFor([this] { return receiver->arrived == 15; });
}

TEST_F(Exchange, TellsHowMuchOfABodyWasTakenWhateverTheEnd)
{
	constexpr int64 size = 3'000'000;
	const auto body = []
	{
		TArray<uint8> bytes;
		bytes.SetNumUninitialized(size);
		return TSharedPtr<FCorvaneBodyStream>(
			MakeShared<FCorvaneBodyStream>(TArray<FCorvaneBodySegment>{FCorvaneBodySegment::OfBytes(bytes)}));
	};
	Lab::Origin server;
	server.at("/early", Lab::upload({.refusesAfter = 0}), "too much").at("/silent", Lab::holdBody(Lab::Gate()));
	server.at("/whole", Lab::status({.code = 201}), Lab::headers({{"Location", "/new"}}));
	server.at("/elsewhere", Lab::redirect({.to = "/whole", .code = 307}));
	start(server.url("/whole"), 20, body());
	EXPECT_EQ(waitForEnd().End, End::Done);
	EXPECT_EQ(receiver->result.Answer.Code, 201);
	EXPECT_EQ(receiver->result.SentBytes, size);
	EXPECT_EQ(server.log().front().request->announced, uint64(size));
	EXPECT_EQ(server.log().front().request->header("Content-Type"), "text/plain");
	start(server.url("/early"), 20, body());
	EXPECT_EQ(waitForEnd().Answer.Code, 413);
	EXPECT_EQ(receiver->body, "too much");
	EXPECT_LE(receiver->result.SentBytes, size);
	start(server.url("/elsewhere"), 20, body());
	EXPECT_EQ(waitForEnd().End, End::Dropped) << "it would be needed twice";
	EXPECT_EQ(receiver->result.Answer.Code, 307);
	EXPECT_FALSE(receiver->result.bAnswerIsWhole);
	start("http://127.0.0.1:1/", 20, body());
	EXPECT_EQ(waitForEnd().End, End::NoConnection);
	EXPECT_EQ(receiver->result.SentBytes, 0);
	const TSharedRef<FCorvaneExchange> silent = start(server.url("/silent"), 20, body());
	waitFor([&] { return server.requests() == 4; });
	silent->Cancel();
	EXPECT_EQ(waitForEnd().End, End::Cancelled);
	EXPECT_GT(receiver->result.SentBytes, 0);
}
