#include "ProcessRun.h"
#include "RawServer.h"
#include "Waiting.h"

#include <csignal>
#include <gmock/gmock.h>

using ::testing::_;
using ::testing::HasSubstr;
using ::testing::Matcher;
using ::testing::MatchesRegex;

namespace
{
	const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\nretry:1\n";

	/** Two events a connection, behind the one that was asked for; 204 after the sixth. A POST is answered once. */
	std::string respond(const std::string& request, const std::string& body)
	{
		const std::string target = targetOf(request);
		if (target != "/events")
		{
			return target == "/page" ? answer(200, "no") : answer(404, "no");
		}
		if (request.starts_with("POST"))
		{
			return head + "data:" + headerOf(request, "Content-Type") + "\ndata:" + body + "\n\n";
		}
		const std::string last = headerOf(request, "Last-Event-ID");
		const int id = last.empty() ? 1 : std::stoi(last) + 1;
		const auto event = [](int number)
		{
			return "event:" + std::string(number % 2 ? "odd" : "even") + "\nid:" + std::to_string(number) + "\ndata:e" +
				   std::to_string(number) + "\x1b\n\n";
		};
		return id > 6 ? answer(204, "") : head + event(id) + event(id + 1);
	}
} // namespace

TEST(Follow, PrintsEventsAndSaysHowItEnded)
{
	struct Case
	{
		const char* words; // $u is the address of a server
		int status;
		Matcher<const std::string&> out;
		Matcher<const std::string&> err;
	};
	const std::string none;
	const std::string all = "e1\x1b\ne2\x1b\ne3\x1b\ne4\x1b\ne5\x1b\ne6\x1b\n";
	const Case cases[] = {
		{"follow $u/events", 0, all,
			"corvane: connected\ncorvane: connected again, behind the event 2\ncorvane: connected again, behind the event 4\n"
			"corvane: The server has no more events.\n"},
		{"follow -q $u/events --last-id 4 --event odd", 0, "e5\x1b\n", none},
		{"follow $u/events --max 3 -q --json", 0,
			MatchesRegex(R"(\{"ID":"1","Type":"odd","Data":"e1\\u001b"\}.\{"ID":"2".*\}.\{"ID":"3".*\}.)"), none},
		{"follow $u/events --no-reconnect", 0, "e1\x1b\ne2\x1b\n", "corvane: connected\ncorvane: The stream came to its end.\n"},
		{"follow -q $u/events -d '{}' --max 1", 0, "application/json\n{}\n", none},
		{"follow -q $u/events -d @- -H 'content-type: text/x' --no-reconnect < body", 0, "text/x\nfrom a file\n", none},
		{"follow $u/page", 1, none, HasSubstr("corvane: The server sent no events")},
		{"follow $u/missing", 1, none, "corvane: The server answered with status 404.\n"},
		{"follow nowhere", 2, none, HasSubstr("the scheme is missing")},
		{"follow $u/events --max 0", 2, none, HasSubstr("--max")},
		{"follow $u/events -H x", 2, none, HasSubstr("'x' is no header")},
		{"call FollowEvents URL=$u/events", 0, MatchesRegex(R"((event: e[1-6]\\u001b.){6}ID: 6.Type: .Data: .Report.Outcome: Ended.*)"), _},
		{"call --json FollowEvents URL=$u/events | head -1", 0,
			R"({"event":"OnEvent","ID":"1","Type":"odd","Data":"e1\u001b"})"
			"\n",
			_},
		{"call FollowEvents URL=$u/missing", 1, HasSubstr("Report.Sentence: The server answered with status 404."), _},
		{"call FollowEvents URL=$u/events --body", 2, none, HasSubstr("a stream of events has no body")},
	};
	const RawServer server(
		[](Connection& connection)
		{
			const std::string request = connection.readHead();
			connection.send(respond(request, connection.readBody(request)));
		});
	const TempDir directory;
	directory.write("body", "from a file");
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.words);
		const ProcessRun run = runProcess({"/bin/sh", "-c", std::string("cd $0; u=$2; $1 ") + tested.words, directory.path(),
			CORVANE_PROGRAM, "http://" + server.authority()});
		EXPECT_EQ(run.status, tested.status);
		EXPECT_THAT(run.out, tested.out);
		EXPECT_THAT(run.err, tested.err);
	}
}

TEST(Follow, EndsByASignalAndTellsHowToGoOn)
{
	const RawServer server(
		[](Connection& connection)
		{
			connection.readHead();
			connection.send(head + "id:seven\ndata:x\n\n");
			connection.waitForPeer();
		});
	RunningProcess process({CORVANE_PROGRAM, "follow", server.url()});
	ASSERT_TRUE(waitFor([&] { return process.out() == "x\n"; }));
	const ProcessRun ended = process.end(SIGINT);
	EXPECT_EQ(ended.status, 128 + SIGINT);
	EXPECT_EQ(ended.err, "corvane: connected\ncorvane: interrupted\ncorvane: --last-id 'seven' goes on\n");
}
