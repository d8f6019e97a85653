#include "Lab/Cassettes/Cassette.h"
#include "Client.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Cassettes/Recorder.h"
#include "Lab/Origin.h"
#include "TempDir.h"
#include "Waiting.h"

#include <gmock/gmock.h>

#include <sstream>

using ::testing::HasSubstr;
using ::testing::Not;

namespace
{
	const std::string everyByte = []
	{
		std::string bytes;
		for (int byte = 0; byte < 256; ++byte)
		{
			bytes += static_cast<char>(byte);
		}
		return bytes;
	}();

	/** Records what a client does to a server. @return the cassette, with what each answer was. */
	Lab::Cassette record(
		const std::string& to, const TempDir& directory, bool keepsSecrets, const std::function<void(const Lab::Recorder&)>& use)
	{
		const std::string file = directory.path("cassette");
		{
			const Lab::Recorder recorder({.to = to, .file = file, .keepsSecrets = keepsSecrets});
			use(recorder);
		}
		return Lab::loadCassette(file);
	}

	/** @return the bytes of all pieces, and when the last one came, in milliseconds. */
	std::pair<std::string, double> whole(const Lab::RawAnswer& answer)
	{
		std::pair<std::string, double> all;
		for (const Lab::RawPiece& piece : answer.pieces)
		{
			all.first += piece.bytes;
			all.second += piece.pause.count();
		}
		return all;
	}
} // namespace

TEST(Cassette, ComesBackByteForByteAndInItsTime)
{
	const TempDir directory;
	Lab::Origin origin;
	origin.at("/pieces", Lab::file(everyByte), Lab::pieces({3, 100}, Lab::Milliseconds(30)));
	origin.at("/chunks", Lab::inTurn({"first", "second"}), Lab::chunked({2}));
	origin.at("/echo", Lab::echo());
	const auto use = [](const Lab::Recorder& recorder)
	{
		ask(recorder.url("/pieces"));
		ask(recorder.url("/chunks"));
		ask(recorder.url("/chunks"));
		ask(recorder.url("/echo"), {{"Expect:"}, "PUT", everyByte});
		waitFor([&] { return recorder.count() == 4; });
	};
	Lab::Cassette first = record(origin.url(), directory, false, use);
	Lab::Origin player;
	player.at("*", replay(first));
	const Lab::Cassette second = record(player.url(), directory, false, use);
	ASSERT_EQ(first.size(), 4U);
	ASSERT_EQ(second.size(), 4U);
	for (std::size_t index = 0; index < first.size(); ++index)
	{
		EXPECT_EQ(whole(first[index].answer).first, whole(second[index].answer).first);
	}
	// Two pieces may come as one on a busy machine, but the last one not too early.
	EXPECT_GE(first[0].answer.pieces.size(), 2U);
	EXPECT_GE(whole(first[0].answer).second, 89);
	EXPECT_GE(whole(second[0].answer).second, 89);
	EXPECT_THAT(first[3].request, ::testing::EndsWith("\r\n\r\n" + everyByte));

	first[0].answer.pieces.back().pause = std::chrono::hours(1);
	player.at("*", replay(first, 0));
	ask(player.url("/lab/log"), {.method = "DELETE"}); // the visits
	for (const char* const chunks : {"first", "second", "second"})
	{
		EXPECT_EQ(ask(player.url("/chunks")).body, chunks);
	}
	EXPECT_EQ(ask(player.url("/pieces")).body, everyByte);
	EXPECT_EQ(ask(player.url("/none")).body, "There is no GET /none on the cassette.\n");
}

TEST(Cassette, KeepsNoSecretsUnlessAsked)
{
	const TempDir directory;
	Lab::Origin origin;
	origin.at("/base/in", "welcome", Lab::headers({{"Set-Cookie", "id=5ecret"}, {"X-Other", "open"}}), Lab::pieces({1}));
	const auto use = [](const Lab::Recorder& recorder)
	{
		const Got got = ask(recorder.url("/in?access_token=5ecret&a=open&key=5ecret"),
			{{"Authorization: Bearer 5ecret", "Cookie: 5ecret", "X-Api-Key:5ecret"}});
		EXPECT_EQ(got.body, "welcome");
		EXPECT_THAT(got.head, HasSubstr("id=5ecret"));
		waitFor([&] { return recorder.count() == 1; });
	};
	const Lab::Cassette clean = record(origin.url("/base/"), directory, false, use);
	const std::string text = print(clean.at(0));
	EXPECT_THAT(text, Not(HasSubstr("5ecret")));
	EXPECT_THAT(text, HasSubstr("GET /in?access_token=(removed)&a=open&key=(removed) HTTP/1.1\\r\\n\n"));
	EXPECT_THAT(text, HasSubstr("< X-Other: open\\r\\n\n"));
	EXPECT_EQ(origin.log().at(0).request->target, "/base/in?access_token=5ecret&a=open&key=5ecret");
	EXPECT_EQ(origin.log().at(0).request->header("Host"), origin.authority());
	EXPECT_THAT(print(record(origin.url("/base"), directory, true, use).at(0)), HasSubstr("> Authorization: Bearer 5ecret\\r\\n\n"));
	origin.at("*", replay(clean));
	EXPECT_EQ(ask(origin.url("/in?access_token=other&a=open&key=other")).body, "welcome");
}

TEST(Cassette, HidesSecretsAcrossPiecesAndBehindInterimAnswers)
{
	Lab::RecordedExchange exchange{
		"GET / HTTP/1.1\r\n\r\nCookie: of the body\r\n", {{{{}, "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nSet-Coo"}, {{}, "kie: 5e"},
															 {{}, "cr"}, {{}, "et\r\nA: b\r\n\r\nCookie: of the body"}}}};
	removeSecrets(exchange);
	EXPECT_THAT(exchange.request, HasSubstr("Cookie: of the body"));
	ASSERT_EQ(exchange.answer.pieces.size(), 4U);
	EXPECT_EQ(exchange.answer.pieces[1].bytes, "kie: (removed)");
	EXPECT_EQ(exchange.answer.pieces[2].bytes, "");
	EXPECT_EQ(exchange.answer.pieces[3].bytes, "\r\nA: b\r\n\r\nCookie: of the body");
}

TEST(Cassette, SaysWhichLineIsWrong)
{
	const struct
	{
		std::string text;
		const char* fault;
	} cases[] = {
		{"", "this is no cassette: its first line has to be 'corvane cassette 1'"},
		{"> a", "line 2: an exchange begins with 'request'"},
		{"request\n\n# more\n> \\q", "line 5: a backslash stands before r, n, t, x with two digits, or another backslash"},
		{"request\n@ soon", "line 3: after @ stands a number of milliseconds, a day at most"},
		{"request\nend", "line 3: a line begins with request, >, <, @, end close or end reset"},
	};
	for (const auto& [text, fault] : cases)
	{
		try
		{
			std::istringstream stream(text.empty() ? "" : Lab::cassetteHead + text);
			Lab::parseCassette(stream);
			ADD_FAILURE() << text;
		}
		catch (const std::invalid_argument& error)
		{
			EXPECT_STREQ(error.what(), fault);
		}
	}
}

TEST(Cassette, AnswersForAServerThatIsNotThere)
{
	const TempDir directory;
	std::string complaint;
	const std::string nobody = Lab::Origin().url();
	{
		const Lab::Recorder recorder(
			{.to = nobody, .file = directory.path("cassette"), .complain = [&](const std::string& text) { complaint = text; }});
		EXPECT_EQ(ask(recorder.url()).status, 502);
	}
	EXPECT_THAT(complaint, HasSubstr("cannot reach 127.0.0.1:"));
	Lab::Origin secret({.usesTls = true});
	const Lab::Recorder recorder({.to = secret.url(), .file = directory.path("cassette")});
	EXPECT_EQ(ask(recorder.url()).status, 502) << "its certificate is trusted by nobody";
	EXPECT_THROW(Lab::Recorder({.to = "ftp://a", .file = directory.path("cassette")}), std::invalid_argument);
}
