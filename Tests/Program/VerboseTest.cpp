#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"

#include <gmock/gmock.h>

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{
	constexpr const char* onTerminal = R"sh(
		cd "$0"; export c=$1 host=$2
		script -qec '
			$c call -v CreateHttpRequestIndividual verb=POST contentBody=sent "url=http://s3cret:s3cret@$host/first?sig=s3cret&design=1" \
				-H "Authorization: Bearer s3cret" -H "Cookie: a=s3cret" -H "Content-Type: a/b" > /dev/null
			$c run -v script.lua http://$host/next' /dev/null | tr -d '\r'
	)sh";

	constexpr const char* verboseScript = R"lua(
		CorvaneBPLibrary.executeHttpRequests{ httpRequests = CorvaneBPLibrary.CreateHttpRequestGET{ url = arg[1] }.httpRequests }
	)lua";
} // namespace

TEST(Verbose, TellsHeadsAsTheyTravelWithoutBodiesAndSecrets)
{
	Lab::Origin server;
	const std::string next = "http://s3cret:s3cret@" + server.authority() + "/next?x=1&access_token=s3cret&y=2#id_token=s3cret";
	server.at("/first", Lab::redirect({.to = next}), Lab::headers({{"Set-Cookie", "id=s3cret"}, {"Link", "<" + next + ">; rel=next"}}));
	server.at("/next", Lab::status({.code = 401, .text = "the body"}),
		Lab::headers({{"X-Bell", "\x1b[2J\x07"}, {"WWW-Authenticate", "Basic realm=\"here\""}}));
	const TempDir directory;
	directory.write("script.lua", verboseScript);
	const std::string told = runProcess({"/bin/sh", "-c", onTerminal, directory.path(), CORVANE_PROGRAM, server.authority()}).out;
	const std::string place = "http://(hidden)@" + server.authority() + "/next?x=1&access_token=(hidden)&y=2#id_token=(hidden)";
	EXPECT_THAT(told,
		AllOf(HasSubstr("> POST /first?sig=(hidden)&design=1 HTTP/1.1\n> Host: " + server.authority() + "\n"),
			HasSubstr("> Authorization: (hidden)\n> Cookie: (hidden)\n> Content-Type: a/b\n> Content-Length: 4\n< HTTP/1.1 302"),
			HasSubstr("< Location: " + place + "\n< Set-Cookie: (hidden)\n< Link: <" + place + ">; rel=next\n"),
			HasSubstr("> GET /next?x=1&access_token=(hidden)&y=2 HTTP/1.1\n"),
			HasSubstr("< X-Bell: \\u001b[2J\\u0007\n< WWW-Authenticate: Basic realm=\"here\"\n"), HasSubstr("> GET /next HTTP/1.1\n")));
	EXPECT_THAT(told, AllOf(Not(HasSubstr("s3cret")), Not(HasSubstr("sent")), Not(HasSubstr("the body"))));
}
