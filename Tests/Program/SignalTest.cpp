#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"
#include "RandomBytes.h"
#include "Waiting.h"

#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <thread>

using ::testing::ContainsRegex;
using ::testing::IsEmpty;
using ::testing::Matcher;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace
{
	struct SignalCase
	{
		const char* command; // $c is the program, $b a pin with the address of a server
		const char* script; // script.lua, where ready() tells that it is time
		const char* ready; // is written when it is time
		std::vector<int> signals; // sent one right after the other
		int status;
		Matcher<const std::string&> out;
		Matcher<const std::string&> err;
	};

	const SignalCase signalCases[] = {
		{"exec $c call --progress CreateHttpRequestGETDownload $b filePathWithFileName=file", "", "received", {SIGINT}, 130, IsEmpty(),
			MatchesRegex("(.* received.*\n)+corvane: interrupted; kept [1-9][0-9]* bytes in '.*/file'; the same download with "
						 "ActionIfFileExists=E_RESUME goes on\n")},
		// To the process, and to its group.
		{"exec $c call --progress AsyncExecuteHTTP_Download_REQUEST $b filePathWithFileName=file", "", "received", {SIGTERM, SIGTERM}, 143,
			IsEmpty(), MatchesRegex("(.* received.*\n)+corvane: terminated; kept [1-9][0-9]* bytes in '.*/file'; the .*\n")},
		{"exec $c call --progress CreateHttpRequestFileUploadPUT $b filePath=upload fileID=f uploadType=PUT_STREAM_MP", "", "100 % sent",
			{SIGHUP}, 129, IsEmpty(), MatchesRegex("(.* sent.*\n)+LogTemp: Display: .*: truncate okay: .*\ncorvane: hung up\n")},
		{"exec $c call --progress CreateHttpRequestFileUploadPUT $b filePath=upload fileID=f uploadType=PUT_STREAM_COPY", "", "100 % sent",
			{SIGTERM}, 143, IsEmpty(), MatchesRegex("(.* sent.*\n)+LogTemp: .*: upload copy has been deleted: .*\ncorvane: terminated\n")},
		{"exec $c run script.lua", "ready() wait(function() end, 1000) print('on')", "ready", {SIGINT}, 130, "ready",
			"corvane: interrupted\n"},
		{"exec $c run script.lua", "ready() coroutine.wrap(function() while true do pcall(function() while true do end end) end end)()",
			"ready", {SIGTERM}, 143, "ready", "corvane: terminated\n"},
		{"mkfifo f; exec 3<> f; exec $c run script.lua <&3", "ready() if not io.read() then print('at the end') end", "ready", {SIGINT},
			130, "ready", "corvane: interrupted\n"},
		{"mkfifo f; exec 3<> f; { head -c 100000 /dev/zero >&3; echo ready; } & exec $c call CreateHttpRequestIndividual $b contentBody=@/dev/stdin <&3",
			"", "ready", {SIGHUP}, 129, "ready\n", "corvane: hung up\n"},
		{"exec $c run script.lua", "print(os.execute('exit 3')) ready() os.execute('exec sleep 1000') print('on')", "ready", {SIGINT}, 130,
			"nil\texit\t3\nready", "corvane: interrupted\n"},
		{"exec $c demo", "", "first request", {SIGINT}, 130, StartsWith("== 01-get.lua"), "corvane: interrupted\n"},
		{"trap '' HUP; exec $c run script.lua", "ready() print(wait(function() end, 0.3))", "ready", {SIGHUP}, 0, "readyfalse\n",
			IsEmpty()},
		// Ctrl-C at a terminal takes the progress bar away.
		{R"sh(mkfifo keys; exec 3<> keys; touch screen; (until grep -q received screen; do :; done; printf '\003' >&3) &
			script -qefc "$c call CreateHttpRequestGETDownload $b filePathWithFileName=file" screen <&3)sh",
			"", "", {}, 130, ContainsRegex("received of 195.3 KiB.*\r\x1b\\[Kcorvane: interrupted; kept [0-9]* bytes"), IsEmpty()},
	};

	const std::string setUp = R"(cd "$0" && export c=$1 b=url=$2; )";
	/** ThreadSanitizer may hold a signal back for good that comes between two calls that it watches: the next one frees it. */
	void sendHeldBack([[maybe_unused]] RunningProcess& process, [[maybe_unused]] const std::vector<int>& signals)
	{
#ifdef __SANITIZE_THREAD__
		const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(8);
		while (!process.hasEnded() && std::chrono::steady_clock::now() < patience)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
		}
		if (!signals.empty())
		{
			process.send(signals.front());
		}
#endif
	}
} // namespace

TEST(Signal, EndsEveryVerbInOrder)
{
	const std::string content = randomBytes(100000);
	Lab::Origin server; // sends half of a file, and never the rest; takes what it is sent
	server.at("GET /", content, Lab::length({.says = 200000}), Lab::stall({.at = {.byte = 100000}})).at("/", Lab::stall());
	for (const SignalCase& tested : signalCases)
	{
		SCOPED_TRACE(tested.command);
		const TempDir directory;
		directory.write(
			"script.lua", std::string("local function ready() io.stdout:write('ready') io.stdout:flush() end ") + tested.script);
		directory.write("upload", content);
		RunningProcess process({"/bin/sh", "-c", setUp + tested.command, directory.path(), CORVANE_PROGRAM, server.url()});
		ASSERT_TRUE(waitFor([&] { return (process.out() + process.err()).find(tested.ready) != std::string::npos; }));
		for (const int signal : tested.signals)
		{
			process.send(signal);
		}
		sendHeldBack(process, tested.signals);
		const ProcessRun run = process.end(0);
		EXPECT_EQ(run.status, tested.status);
		EXPECT_THAT(run.out, tested.out);
		EXPECT_THAT(run.err, tested.err);
		EXPECT_TRUE(directory.read("upload") == content);
		EXPECT_EQ(runProcess({"/bin/ls", directory.path()}).out.find("UEUploadCopy"), std::string::npos);
		if (directory.exists("file"))
		{
			const std::string kept = directory.read("file");
			EXPECT_TRUE(content.starts_with(kept));
			EXPECT_THAT(run.out + run.err, ContainsRegex("; kept " + std::to_string(kept.size()) + " bytes in "));
		}
	}
}

/** The program waits for another one that does not end. */
TEST(Signal, OfASecondWishEndsWithoutOrder)
{
	const TempDir directory;
	const char* const busy = "os.execute('trap : TERM; echo ready; while kill -0 $PPID 2> /dev/null; do sleep 0.1; done')";
	RunningProcess process({CORVANE_PROGRAM, "run", directory.write("script.lua", busy)});
	ASSERT_TRUE(waitFor([&] { return process.out() == "ready\n"; }));
	const auto begin = std::chrono::steady_clock::now();
	EXPECT_TRUE(waitFor(
		[&]
		{
			process.send(SIGTERM);
			return process.hasEnded();
		}));
	EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200)); // one wish may be sent twice
	const ProcessRun run = process.end();
	EXPECT_EQ(run.status, 143);
	EXPECT_EQ(run.err, "");
}
