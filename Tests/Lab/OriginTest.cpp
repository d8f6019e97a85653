#include "Lab/Origin.h"
#include "Client.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Script/Catalogue.h"
#include "Lab/Script/ReadyOrigin.h"
#include "TempDir.h"
#include "Waiting.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <sys/socket.h>

using ::testing::HasSubstr;

namespace
{
	long openDescriptors()
	{
		return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
	}

	/** Connections that ask together, round after round. @return how many answers had this size. */
	int askInRounds(int port, int connections, int rounds, std::size_t answerSize)
	{
		sockaddr_in place{};
		place.sin_family = AF_INET;
		place.sin_port = htons(static_cast<std::uint16_t>(port));
		place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		std::vector<int> sockets;
		for (int each = 0; each < connections; ++each)
		{
			sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
			EXPECT_EQ(::connect(sockets.back(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
		}
		int good = 0;
		for (int round = 0; round < rounds; ++round)
		{
			constexpr std::string_view request = "GET /small HTTP/1.1\r\nHost: here\r\n\r\n";
			for (const int socket : sockets)
			{
				::send(socket, request.data(), request.size(), MSG_NOSIGNAL);
			}
			for (const int socket : sockets)
			{
				std::array<char, 1024> room{};
				good += ::recv(socket, room.data(), answerSize, MSG_WAITALL) == static_cast<ssize_t>(answerSize) ? 1 : 0;
			}
		}
		for (const int socket : sockets)
		{
			::close(socket);
		}
		return good;
	}
} // namespace

TEST(LabOrigin, ServesManyAndKeepsNothing)
{
	const long before = openDescriptors();
	{
		Lab::Origin origin;
		origin.at("/small", "small");
		const std::size_t size = converse(origin.port(), "GET /small HTTP/1.1\r\n\r\nGET /small HTTP/1.0\r\n\r\n").size();
		EXPECT_EQ(askInRounds(origin.port(), 64, 160, (size - std::string("Connection: close\r\n").size()) / 2), 64 * 160);
		EXPECT_EQ(origin.log().size(), 64U * 160 + 2);
		EXPECT_TRUE(waitFor([&] { return origin.running() == 0; }));
		EXPECT_TRUE(waitFor([&] { return openDescriptors() <= before + 4; })); // listener, poller, bell, and the directory that is read
	}
	EXPECT_EQ(openDescriptors(), before);
}

TEST(LabOrigin, HoldsAnAnswerOrABodyUntilTheGateOpens)
{
	Lab::Origin origin;
	Lab::Gate gate;
	origin.at("/held", Lab::file("0123456789"), Lab::hold(gate, {.byte = 3}));
	origin.at("/stalled", Lab::file("0123456789"), Lab::stall()).at("/unread", "read", Lab::holdBody(gate));
	std::string held;
	std::jthread client([&] { held = converse(origin.port(), "GET /held HTTP/1.1\r\nConnection: close\r\n\r\n"); });
	std::jthread other([&] { EXPECT_EQ(converse(origin.port(), "GET /stalled HTTP/1.1\r\n\r\n"), ""); });
	std::jthread sender([&] { EXPECT_EQ(ask(origin.url("/unread"), {.body = std::string(1 << 20, 'x')}).body, "read"); });
	waitFor([&] { return origin.running() == 2 && origin.requests() == 3; });
	EXPECT_EQ(origin.log().size(), 2u) << "a body is read that should be left";
	EXPECT_FALSE(gate.isOpen());
	gate.open();
	client.join();
	sender.join();
	EXPECT_THAT(held, ::testing::EndsWith("0123456789"));
	EXPECT_TRUE(waitFor([&] { return origin.running() == 1; }));
	origin.dropConnections();
	other.join();
	EXPECT_EQ(origin.running(), 0);
}

TEST(LabOrigin, FindsThePlaceThatSaysMost)
{
	Lab::Origin origin;
	origin.at("*", "all").at("/a*", "a").at("/a/b*", "ab").at("/a/b/c", "whole").at("PUT /a/b*", "put").at("PUT /a/b/c", "put whole");
	const struct
	{
		const char* path;
		const char* got;
		const char* put;
	} cases[] = {{"/", "all", "all"}, {"/ax", "a", "a"}, {"/a/bx?/a/b/c", "ab", "put"}, {"/a/b/c?d", "whole", "put whole"}};
	for (const auto& [path, got, put] : cases)
	{
		EXPECT_EQ(ask(origin.url(path)).body, got) << path;
		EXPECT_EQ(ask(origin.url(path), {.method = "PUT", .body = "x"}).body, put) << path;
	}
	EXPECT_EQ(ask(origin.at("/a/b/c", "other").url("/a/b/c")).body, "other");
}

TEST(LabOrigin, TellsWhatCame)
{
	Lab::Origin origin;
	origin.at("/*", Lab::upload());
	origin.at("/cut", Lab::file(std::string(100'000, 'x')), Lab::dropAfter(1000));
	ask(origin.url("/a?b=c"), {{"X-A: one", "X-A: two"}, "PUT", "body"});
	ask(origin.url("/cut"));
	const nlohmann::json log = nlohmann::json::parse(ask(origin.url("/lab/log")).body);
	ASSERT_EQ(log.size(), 2U);
	EXPECT_EQ(log[0]["method"], "PUT");
	EXPECT_EQ(log[0]["target"], "/a?b=c");
	EXPECT_EQ(log[0]["headers"]["X-A"], "one, two");
	EXPECT_EQ(log[0]["bodyBytes"], 4);
	EXPECT_EQ(log[0]["bodyMd5"], "841a2d689ad86bd1611447453c22c6fc");
	EXPECT_EQ(log[0]["end"], "complete");
	EXPECT_EQ(log[1]["end"], "dropped");
	EXPECT_GT(log[1]["sentBytes"], 1000);
	EXPECT_LT(log[1]["sentBytes"], 1500);
	ask(origin.url("/lab/log"), {.method = "DELETE"});
	EXPECT_EQ(ask(origin.url("/lab/log")).body, "[]\n");
}

TEST(LabOrigin, SpeaksTlsToThoseWhoTrustIt)
{
	Lab::Origin origin({.usesTls = true});
	const Lab::ContentPtr content = Lab::madeContent(3'000'000);
	origin.at("/file", Lab::file(content)).at("/cut", Lab::file(content), Lab::dropAfter(5));
	const Got got = ask(origin.url("/file"), {.trusts = origin.certificate()});
	EXPECT_TRUE(got.body == wholeOf(*content)) << got.error;
	EXPECT_EQ(ask(origin.url("/cut"), {.trusts = origin.certificate()}).body.size(), 5U);
	EXPECT_EQ(ask(origin.url("/file")).error, CURLE_PEER_FAILED_VERIFICATION);
}

TEST(LabOrigin, SendsFilesOfTheDisk)
{
	const TempDir directory;
	const std::string bytes = wholeOf(*Lab::madeContent(3'000'000, 7));
	Lab::Origin origin;
	origin.at("/file", Lab::file(Lab::fileContent(directory.write("file", bytes))));
	EXPECT_TRUE(ask(origin.url("/file")).body == bytes);
	EXPECT_TRUE(ask(origin.url("/file"), {{"Range: bytes=1048570-1048580"}}).body == bytes.substr(1048570, 11));
	EXPECT_THROW(Lab::fileContent(directory.path("none")), std::system_error);
}

TEST(LabOrigin, IsReadyWithEveryBehaviour)
{
	Lab::Origin origin;
	makeReady(origin);
	const std::string list = ask(origin.url("/")).body;
	for (const Lab::CatalogueEntry& entry : Lab::catalogue())
	{
		EXPECT_THAT(list, HasSubstr('/' + entry.name + "  ")) << "not listed";
	}
	EXPECT_EQ(ask(origin.url("/drop?after=90%25")).body.size(), 90'000U);
	EXPECT_EQ(ask(origin.url("/file?size=500&drop.after=10&drop.requests=1")).body.size(), 10U);
	EXPECT_EQ(ask(origin.url("/file?size=500&drop.after=10&drop.requests=1")).body.size(), 500U);
	EXPECT_EQ(ask(origin.url("/upload?refusesAfter=3"), {.body = "12345"}).status, 413);
	ask(origin.url("/tus"), {.method = "POST", .body = "-"});
	EXPECT_THAT(ask(origin.url("/tus/1"), {.method = "HEAD"}).head, HasSubstr("Upload-Offset: 0"));
	const struct
	{
		const char* target;
		const char* answer;
	} wrong[] = {
		{"/file?rang=1", "file: there is no option 'rang', only bytes, "},
		{"/file?ranges=no", "file: ranges has to be one of honest, ignored"},
		{"/file?path=/etc/hostname", "file: path is for scripts only"},
		{"/text?file.path=/etc/hostname", "file: path is for scripts only"},
		{"/drop?after=x", "drop: after has to be a number that is not negative"},
		{"/drop?none.a=1", "there is no behaviour 'none'"},
	};
	for (const auto& [target, answer] : wrong)
	{
		const Got got = ask(origin.url(target));
		EXPECT_EQ(got.status, 400);
		EXPECT_THAT(got.body, ::testing::StartsWith(answer));
	}
}
