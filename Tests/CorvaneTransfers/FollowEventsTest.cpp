#include "CorvaneFollowEvents.h"
#include "CorvaneTransfer.h"
#include "GameLoop.h"
#include "Listen.h"
#include "RawServer.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <atomic>
#include <gtest/gtest.h>
#include <random>

using Outcome = ECorvaneTransferOutcome;

namespace
{
	const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\n";
	const std::string noMore = "HTTP/1.1 204 No Content\r\n\r\n";

	std::string eventOf(int id, const std::string& data)
	{
		return "id:" + std::to_string(id) + "\ndata:" + data + "\n\n";
	}

	/** @return the ID of the event that a request wants to go on behind; 0 = none. */
	int lastIdOf(const std::string& request)
	{
		const std::string id = headerOf(request, "Last-Event-ID");
		return id.empty() ? 0 : std::stoi(id);
	}

	class FollowEvents : public ::testing::Test
	{
	protected:
		static FCorvaneFollowOptions patient()
		{
			FCorvaneFollowOptions options;
			options.ReconnectSeconds = 0.001;
			options.LongestWaitSeconds = 0.01;
			return options;
		}

		UCorvaneFollowEvents* start(const std::string& url, const FCorvaneFollowOptions& options = patient())
		{
			++expected;
			UCorvaneFollowEvents::FHandlers handlers;
			handlers.OnEvent = [this](const FString& id, const FString&, const FString& data)
			{
				ids.push_back(utf8(id));
				texts.push_back(utf8(data));
				if (onEvent)
				{
					onEvent();
				}
			};
			handlers.OnClose = [this](const FCorvaneTransferReport& report) { reports.push_back(report); };
			handlers.OnBeforeAttempt = [this](UCorvaneFollowEvents& asked)
			{
				if (onBeforeAttempt)
				{
					onBeforeAttempt(asked);
				}
			};
			node = UCorvaneFollowEvents::Start(text(url), options, handlers);
			return node;
		}

		FCorvaneTransferReport finish()
		{
			EXPECT_TRUE(loop.WaitFor([this] { return reports.size() >= expected; }, patienceSeconds));
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(reports.size(), expected); // each start has one outcome
			return reports.empty() ? FCorvaneTransferReport() : reports.back();
		}

		/** Sends events without end, as fast as they are taken. */
		RawServer::Script flood()
		{
			return [this](Connection& connection)
			{
				const std::string data(10'000, 'x');
				int id = lastIdOf(connection.readHead());
				connection.send(head);
				for (;;)
				{
					connection.send(eventOf(++id, data));
					sent += static_cast<std::int64_t>(data.size());
				}
			};
		}

		FGameLoop loop;
		UCorvaneFollowEvents* node = nullptr;
		std::function<void()> onEvent;
		std::function<void(UCorvaneFollowEvents&)> onBeforeAttempt;
		std::atomic<std::int64_t> sent{0};
		size_t expected = 0;
		std::vector<std::string> ids, texts;
		std::vector<FCorvaneTransferReport> reports;
	};
} // namespace

TEST_F(FollowEvents, ComeOnceAndInOrderWhereverTheConnectionBreaks)
{
	const std::vector<std::string> all = {"one", "two\nlines", "\xC3\xA4"};
	const std::vector<std::string> parts = {
		"\xEF\xBB\xBF:hello\r\n\r\nid:1\r\ndata:one\r\n\r\n", "id:2\rdata:two\rdata:lines\r\r", "id:3\ndata:\xC3\xA4\n\n"};
	const std::string whole = parts[0] + parts[1] + parts[2];
	std::atomic<size_t> cut{0};
	std::atomic<int> requests{0};
	const RawServer server(
		[&](Connection& connection)
		{
			const auto last = static_cast<size_t>(lastIdOf(connection.readHead()));
			if (last == parts.size())
			{
				return connection.send(noMore);
			}
			std::string rest;
			for (size_t part = last; part < parts.size(); ++part)
			{
				rest += parts[part];
			}
			connection.send(head + (requests++ == 0 ? rest.substr(0, cut) : rest));
		});
	for (cut = 0; cut <= whole.size(); ++cut)
	{
		SCOPED_TRACE(cut);
		requests = 0;
		texts.clear();
		start(server.url());
		EXPECT_EQ(finish().Outcome, Outcome::Ended);
		EXPECT_EQ(texts, all);
	}
}

/** Each connection breaks off after a number of bytes that is drawn anew, often inside an event. */
TEST_F(FollowEvents, AreNeitherLostNorDoubledOverManyConnections)
{
	constexpr int last = 1000, mostBytes = 900;
	const auto form = [](int id) -> std::string
	{
		const std::string number = std::to_string(id);
		const std::string ends[] = {"\n", "\r\n", "\r"};
		const std::string& end = ends[id % 3];
		return ":" + end + "data:" + std::string(static_cast<size_t>(id % 50), 'x') + end + "id: " + number + end + "data:" + number + end +
			   end;
	};
	std::atomic<int> connections{0};
	const RawServer server(
		[&](Connection& connection)
		{
			std::minstd_rand random(static_cast<unsigned>(++connections));
			int id = lastIdOf(connection.readHead());
			if (id == last)
			{
				return connection.send(noMore);
			}
			std::string bytes;
			while (id < last && bytes.size() < mostBytes)
			{
				bytes += form(++id);
			}
			connection.send(head + bytes.substr(0, 100 + random() % mostBytes));
		});
	start(server.url());
	EXPECT_EQ(finish().Outcome, Outcome::Ended);
	EXPECT_GT(connections, 100);
	ASSERT_EQ(texts.size(), static_cast<size_t>(last));
	for (int id = 1; id <= last; ++id)
	{
		const std::string& data = texts[static_cast<size_t>(id - 1)];
		EXPECT_EQ(data, std::string(static_cast<size_t>(id % 50), 'x') + "\n" + std::to_string(id));
		EXPECT_EQ(ids[static_cast<size_t>(id - 1)], std::to_string(id));
	}
}

TEST_F(FollowEvents, EndWithOneReason)
{
	const RawServer server(answering(
		[](const std::string& request) -> std::string
		{
			const std::string target = targetOf(request);
			const std::string type = "Content-Type: text/event-stream\r\n";
			return target == "/none"   ? noMore
				   : target == "/page" ? answer(200, "<html>", "Content-Type: text/html\r\n")
				   : target == "/long" ? answer(200, "data:" + std::string(1000, 'x') + "\n\n", type)
				   : target == "/echo" ? answer(200, "data:" + request.substr(0, 4) + headerOf(request, "Content-Type") + "\n\n", type)
									   : answer(404, std::string(100'000, 'x'));
		}));
	struct Case
	{
		std::string url;
		std::function<void(FCorvaneFollowOptions&)> change;
		Outcome outcome;
		int32 code = 0;
		const char* says = "";
	};
	const Case cases[] = {
		{server.url("/none"), [](auto& o) { o.Attempts = 0; }, Outcome::Ended, 204},
		{server.url("/page"), {}, Outcome::ServerError, 200, "sent no events (text/event-stream) but text/html."},
		{server.url("/gone"), {}, Outcome::ServerError, 404, "status 404"},
		{server.url("/long"), [](auto& o) { o.MostEventBytes = 100; }, Outcome::WrongSize, 200},
		{"http://127.0.0.1:1/", [](auto& o) { o.Attempts = 2; }, Outcome::NoConnection},
		{"ftp://host/", {}, Outcome::Refused},
		{server.url(), [](auto& o) { o.Attempts = -1; }, Outcome::Refused},
		{server.url(), [](auto& o) { o.MostEventBytes = 0; }, Outcome::Refused},
		{server.url(), [](auto& o) { o.Body = text("x"); }, Outcome::Refused},
		{server.url(), [](auto& o) { o.bPost = true, o.ContentType = FString(); }, Outcome::Refused},
		{server.url(), [](auto& o) { o.Headers.Add(text("last-event-id"), text("1")); }, Outcome::Refused},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.url);
		FCorvaneFollowOptions options = patient();
		if (each.change)
		{
			each.change(options);
		}
		start(each.url, options);
		EXPECT_EQ(reports.size() + 1, expected); // not inside the call
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_EQ(report.Code, each.code);
		EXPECT_NE(utf8(report.Sentence).find(each.says), std::string::npos) << utf8(report.Sentence);
		EXPECT_TRUE(texts.empty());
	}

	FCorvaneFollowOptions post = patient();
	post.bPost = true;
	post.Body = text("{}");
	onEvent = [this] { node->Cancel(); };
	start(server.url("/echo"), post);
	EXPECT_EQ(finish().Outcome, Outcome::Cancelled);
	EXPECT_EQ(texts, (std::vector<std::string>{"POSTapplication/json"}));
	EXPECT_EQ(server.bodies().back(), "{}");
}

TEST_F(FollowEvents, GoOnWithATokenThatIsNewEachTime)
{
	std::atomic<int> tokens{0};
	const RawServer server(
		[&](Connection& connection)
		{
			const std::string request = connection.readHead();
			const int last = lastIdOf(request);
			if (headerOf(request, "Token") != std::to_string(tokens))
			{
				return connection.send(answer(401, ""));
			}
			connection.send(last == 7 ? noMore : head + "retry:1\n" + eventOf(last + 1, "x")); // and then the connection ends
		});
	int waits = 0;
	onBeforeAttempt = [&](UCorvaneFollowEvents& asked)
	{
		if (++tokens % 2 == 0) // at once
		{
			return asked.SetHeader(text("Token"), text(std::to_string(tokens)));
		}
		asked.Pause(); // or after a while
		++waits;
	};
	FCorvaneFollowOptions options = patient();
	options.LastEventID = text("3");
	options.ReconnectSeconds = 3600; // if it were not for the server
	start(server.url(), options);
	while (reports.empty() && loop.WaitFor([this] { return node->IsPaused() || !reports.empty(); }, patienceSeconds))
	{
		if (reports.empty())
		{
			node->SetHeader(text("Token"), text(std::to_string(tokens)));
			node->Continue();
		}
	}
	EXPECT_EQ(finish().Outcome, Outcome::Ended);
	EXPECT_EQ(ids, (std::vector<std::string>{"4", "5", "6", "7"}));
	EXPECT_EQ(tokens, 5);
	EXPECT_EQ(waits, 3);
}

TEST_F(FollowEvents, AskBehindAnyIDAndBehindNoneThatIsTakenBack)
{
	const std::string id = "a\tb \xE2\x80\xA6";
	const std::string events[] = {"retry:1\nid:" + id + "\ndata:x\n\n", "id:\ndata:y\n\n"};
	std::atomic<size_t> asked{0};
	const RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			const size_t number = asked++;
			connection.send(number < 2 ? head + events[number] : noMore);
		});
	start(server.url());
	EXPECT_EQ(finish().Outcome, Outcome::Ended);
	EXPECT_EQ(ids, (std::vector<std::string>{id, ""}));
	ASSERT_EQ(server.requests().size(), 3u);
	EXPECT_EQ(headerOf(server.requests()[1], "Last-Event-ID"), id);
	EXPECT_EQ(server.requests()[2].find("Last-Event-ID"), std::string::npos);
}

TEST_F(FollowEvents, TakeHeadersBeforeTheirStartAndStartOnce)
{
	const RawServer server(answering([](const std::string&) { return noMore; }));
	FCorvaneFollowOptions options = patient();
	options.Headers.Add(text("Old"), text("1"));
	options.LastEventID = text("3");
	node = UCorvaneFollowEvents::FollowEvents(text(server.url()), options);
	node->SetHeader(text("Old"), FString());
	node->SetHeader(text("New"), text("2"));
	EXPECT_EQ(utf8(node->GetLastEventID()), "3");
	Listen(node->OnClose,
		[this](const FString&, const FString&, const FString&, const FCorvaneTransferReport& report) { reports.push_back(report); });
	expected = 1;
	node->Activate();
	node->Activate();
	EXPECT_EQ(finish().Outcome, Outcome::Ended);
	ASSERT_EQ(server.requests().size(), 1u);
	EXPECT_EQ(headerOf(server.requests()[0], "Old") + headerOf(server.requests()[0], "New"), "2");
}

TEST_F(FollowEvents, AreNotToldInAPauseAndNotLostByIt)
{
	constexpr int last = 40;
	const RawServer server(
		[&](Connection& connection)
		{
			std::string rest = head;
			int id = lastIdOf(connection.readHead());
			for (const int end = std::min(id + 10, last); id < end; ++id)
			{
				rest += eventOf(id + 1, "x");
			}
			connection.send(id == last && rest == head ? noMore : rest);
			connection.waitForPeer(); // it is the pause that ends this connection
		});
	size_t told = 0;
	onEvent = [&]
	{
		if (ids.size() % 5 == 0)
		{
			node->Pause();
			told = ids.size();
		}
	};
	start(server.url());
	while (reports.empty() && loop.WaitFor([this] { return node->IsPaused() || !reports.empty(); }, patienceSeconds))
	{
		if (reports.empty())
		{
			loop.RunUntilIdle([] { return false; });
			EXPECT_EQ(ids.size(), told);
			node->Continue();
		}
	}
	EXPECT_EQ(finish().Outcome, Outcome::Ended);
	EXPECT_EQ(reports.back().Attempts, 5); // what had arrived was not asked for again
	ASSERT_EQ(ids.size(), static_cast<size_t>(last));
	for (int id = 1; id <= last; ++id)
	{
		EXPECT_EQ(ids[static_cast<size_t>(id - 1)], std::to_string(id));
	}
}

TEST_F(FollowEvents, HoldTheConnectionBackWhenNobodyTakesThemAndCanBeEndedThen)
{
	constexpr std::int64_t most = 64 * 1024 * 1024; // far beyond all buffers on the way
	const RawServer server(flood());
	for (const bool exits : {false, true})
	{
		sent = 0;
		ids.clear();
		bool isFull = false;
		onEvent = [&]
		{
			if (!isFull) // a handler that takes long: as long as the server gets rid of something
			{
				const std::int64_t from = sent;
				for (std::int64_t before = -1; before != sent && sent - from < most;)
				{
					before = sent;
					const auto soon = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
					::waitFor([&] { return sent != before || std::chrono::steady_clock::now() > soon; });
				}
				isFull = true;
				EXPECT_LT(sent - from, most);
			}
			EXPECT_EQ(ids.back(), std::to_string(ids.size()));
		};
		start(server.url());
		EXPECT_TRUE(loop.WaitFor([&] { return ids.size() > 1200; }, patienceSeconds)); // 12 MB
		isFull = false;
		EXPECT_TRUE(loop.WaitFor([&] { return isFull; }, patienceSeconds));
		if (exits)
		{
			loop.Shutdown();
		}
		else
		{
			node->Cancel();
			finish();
		}
		ASSERT_EQ(reports.size(), expected);
		EXPECT_EQ(reports.back().Outcome, exits ? Outcome::Ended : Outcome::Cancelled);
	}
}
