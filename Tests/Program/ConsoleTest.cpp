#include "DemoOrigin.h"
#include "ProcessRun.h"
#include "TempDir.h"

#include <gmock/gmock.h>

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Matcher;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace
{
	struct ConsoleCase
	{
		const char* script; // $c is the command, $get a request to which a path is added, $tty gives a command a terminal
		int status;
		Matcher<const std::string&> out;
		Matcher<const std::string&> err;
	};

	const ConsoleCase consoleCases[] = {
		// What a call prints.
		{"$c call CreateHttpRequestGETDownload url=$url/file filePathWithFileName=f; $c call getMD5FromFile filePath=f | tail -1", 0,
			AllOf(MatchesRegex("path: /.*/f\nsize: 1048576\nseconds: [0-9.]+\nMD5: ([0-9a-f]{32})\nheader: .*"),
				Not(HasSubstr("dataString")), Not(HasSubstr("aaaa"))),
			IsEmpty()},
		{"$c call --json AsyncExecuteHTTP_Download_REQUEST url=$url/none filePathWithFileName=g", 1,
			AllOf(HasSubstr(R"("size":null)"), Not(HasSubstr("MD5")), HasSubstr(R"("statusCode":404)")), HasSubstr("LogTemp")},
		{"$c call --body CreateHttpRequestGETDownload url=$url/file filePathWithFileName=h; r=$?; ls h; exit $r", 2, IsEmpty(),
			HasSubstr("writes the body to a file of its own")},
		{"$get/hello --body", 0, "Hello!", IsEmpty()},
		{"$get/hello -o out && cat out", 0, "Hello!", IsEmpty()},
		{"echo kept > out; $get/hello -o out/x; cat out", 0, "kept\n", HasSubstr("corvane: cannot write 'out/x': Not a directory\n")},
		{"echo kept > out; $c call CreateHttpRequestGET url=http://127.0.0.1:1/ -o out; cat out", 0, "kept\n",
			HasSubstr("corvane: the status is 500\n")},
		{"$c call --body getCleanDirectory", 2, IsEmpty(), HasSubstr("there is no body")},
		// Terminals.
		{"$tty '$post --body 2> /dev/null'", 0, R"(POST a=\u001b[2J\u009b)", IsEmpty()},
		{"$tty '$post --json'", 0, AllOf(HasSubstr(R"(a=\u001b[2J\u009b)"), Not(HasSubstr("\xc2\x9b"))), IsEmpty()},
		{R"(printf %s 'print("a\27[2J\u{9b}", nil)' > p.lua; $tty '$c run p.lua')", 0, "a\\u001b[2J\\u009b\tnil\n", IsEmpty()},
		{"$post", 0, HasSubstr("dataString: POST a=\x1b[2J\xc2\x9b\n"), IsEmpty()},
		{"$tty '$get/file' | grep -c 'a... (2000 of'", 0, "2\n", IsEmpty()},
		{R"sh(for w in 20 80 200; do
				$tty "stty cols $w; $get/file -o /dev/null" | sed 's/\x1b\[K/\n/g' | awk -v w=$w '
					{ bars += /^\[#+ *\]/; too_long += length >= w } END { print w, !!bars, too_long + 0 }'
			done)sh",
			0, "20 0 0\n80 1 0\n200 1 0\n", IsEmpty()},
		{"$tty '$c get $url/file -o f; echo $?' | tail -1", 0, MatchesRegex("(.\\[K)?0\n"), IsEmpty()},
		{"$get/file -o /dev/null", 0, IsEmpty(), IsEmpty()},
		{"$get/file -o /dev/null --progress", 0, IsEmpty(), HasSubstr("100 % received of 1.0 MiB")},
		// Events as they come, from streams without an end.
		{"timeout 5 $get/endless bindServerSendEvent=true | head -2", 0, "event: data: message 1\\n\\n\nevent: data: message 2\\n\\n\n",
			IsEmpty()},
		{"timeout 5 $get/endless bindServerSendEvent=true --body | head -3", 0, "data: message 1\n\ndata: message 2\n", IsEmpty()},
		{"trap '' PIPE; { timeout 5 $get/endless bindServerSendEvent=true --json; echo $? >&2; } | head -1", 0,
			HasSubstr(R"({"event":"onhttpServerSendEventDelegate","response":"data: message 1\n\n",)"), "141\n"},
		// Output that cannot be written.
		{"$get/hello > /dev/full", 1, IsEmpty(), "corvane: cannot write to standard output: No space left on device\n"},
		{"$get/hello -o /dev/full", 1, IsEmpty(), HasSubstr("corvane: cannot write '/dev/full': No space left on device\n")},
		{"timeout 5 $get/endless bindServerSendEvent=true -o /dev/full", 1, IsEmpty(),
			"corvane: cannot write '/dev/full': No space left on device\n"},
		{"$c nodes > /dev/full", 1, IsEmpty(), "corvane: cannot write to standard output: No space left on device\n"},
		{"$c --help >&-", 1, IsEmpty(), "corvane: cannot write to standard output: Bad file descriptor\n"},
		{"$c run lines.lua > /dev/full", 1, IsEmpty(), "corvane: cannot write to standard output: No space left on device\n"},
		{"trap '' PIPE; $c run lines.lua | head -1", 0, "1\n", IsEmpty()},
		{"$c nodes nope 2> /dev/full", 2, IsEmpty(), IsEmpty()},
	};
} // namespace

TEST(Console, SuitsTerminalsPipesAndFullDisks)
{
	const Program::DemoOrigin origin;
	for (const ConsoleCase& tested : consoleCases)
	{
		SCOPED_TRACE(tested.script);
		const TempDir directory;
		directory.write("lines.lua", "for line = 1, 100000 do print(line) end");
		const std::string setUp = R"sh(
			cd "$0" && c=$1 url=$2 get="$1 call CreateHttpRequestGET url=$2"
			post="$1 call CreateHttpRequestPOST url=$2/echo POSTData={\"a\":\"\\u001b[2J\\u009b\"}"
			export c url get post
			run_on_terminal() { script -qec "$1" /dev/null | tr -d '\r'; }
			tty=run_on_terminal
		)sh";
		const ProcessRun run = runProcess({"/bin/sh", "-c", setUp + tested.script, directory.path(), CORVANE_PROGRAM, origin.url()});
		EXPECT_EQ(run.status, tested.status);
		EXPECT_THAT(run.out, tested.out);
		EXPECT_THAT(run.err, tested.err);
	}
}
