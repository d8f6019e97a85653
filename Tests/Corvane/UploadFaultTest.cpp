#include "FileKit.h"
#include "Host/Objects.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Uploads.h"
#include "UploadFixture.h"

#include <fstream>
#include <unistd.h>

using testing::Each;
using testing::ElementsAre;

namespace
{
	namespace fs = std::filesystem;

	class UploadFault : public UploadTest
	{
	protected:
		/** Runs an upload that must be refused: 400 once, nothing sent, nothing kept. */
		void expectRefusal(const std::string& path, Type type)
		{
			loop.CollectGarbage();
			const size_t objects = HostObjects::NumObjects();
			const Completion result = run(put(sink.url(), path, type));
			EXPECT_EQ(result.statusCode, 400) << path << ' ' << static_cast<int>(type);
			EXPECT_TRUE(result.dataString.empty() && result.dataArray.empty() && result.byteData.empty());
			loop.CollectGarbage();
			EXPECT_EQ(HostObjects::NumObjects(), objects) << "a refused upload leaves no rooted object";
			EXPECT_EQ(sink.connections(), 0u);
		}

		/** @return the codes of requests that run one after the other. */
		std::vector<int> codes(const TArray<FhttpRequest>& requests)
		{
			std::vector<int> result;
			for (const FhttpRequest& request : requests)
			{
				completions.clear();
				execute({request});
				EXPECT_TRUE(waitForCompletions());
				result.push_back(completions.back().statusCode);
			}
			completions.clear();
			return result;
		}

		/** @return the code of an upload that a limit holds while it is started. */
		int codeUnder(const std::string& path, Type type, unsigned long bytes, bool bForOneWrite = false)
		{
			const TArray<FhttpRequest> requests = put(sink.url(), path, type);
			{
				const FileSizeLimit limit(bytes, bForOneWrite);
				execute(requests);
			}
			drain();
			return completions.back().statusCode;
		}

		UploadSink sink;
	};

	/** Where a peer may be silent for a short while only. */
	class UploadToBadServer : public UploadTest
	{
	protected:
		UploadToBadServer()
			: UploadTest(impatient(0.6))
		{
		}
	};

	/** Takes the right to ignore permissions from this process for its scope, if it has it. */
	class OrdinaryUser
	{
	public:
		OrdinaryUser() { EXPECT_EQ(before == 0 ? seteuid(nobody) : 0, 0); }
		~OrdinaryUser() { EXPECT_EQ(seteuid(before), 0); }

	private:
		static constexpr uid_t nobody = 65534;
		const uid_t before = geteuid();
	};
} // namespace

TEST_F(UploadFault, FilesThatAreNotThereAreRefused)
{
	const std::string vanishing = dir.write("vanishing", "x");
	const TArray<FhttpRequest> late = put(sink.url(), vanishing, Type::PUT_STREAM_MP);
	fs::remove(vanishing);
	EXPECT_EQ(run(late).statusCode, 400);
	for (const Type type : everyType)
	{
		expectRefusal(dir.path("missing"), type);
		expectRefusal(dir.path(), type);
		expectRefusal(std::string("a\0b", 3), type);
	}
	expectRefusal("", Type::PUT_STREAM_MP);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: File not found: " + dir.path("missing")), 4);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: File not found: "), 14);
	EXPECT_TRUE(files().empty()) << "opening to append must not make a file";
	EXPECT_EQ(run(multi(true, sink.url(), {text(dir.write("1", "x")), text(dir.path("2")), text(dir.path("3"))}, {"f"})).statusCode, 400);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: File not found: "), 15) << "one is enough for the whole form";
}

TEST_F(UploadFault, FilesThatCannotBeOpenedAreRefused)
{
	const std::string path = dir.write("a.bin", "hello");
	fs::permissions(path, fs::perms::none);
	fs::permissions(dir.path(), fs::perms::all);
	for (const Type type : everyType)
	{
		const TArray<FhttpRequest> requests = put(sink.url(), path, type);
		const OrdinaryUser user;
		EXPECT_EQ(run(requests).statusCode, 400);
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: Can't read File: " + path), 2);
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen), 2);
	EXPECT_THAT(files(), ElementsAre("a.bin"));
}

TEST_F(UploadFault, AFileThatMayNotBeWrittenIsNoStreamMultipart)
{
	const std::string path = dir.write("a.bin", "hello");
	fs::permissions(path, fs::perms::owner_read);
	expectRefusal(path, Type::PUT_STREAM_MP);
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen + path), 1);
	EXPECT_THAT(codes(ofEveryKind(sink.url(), path)), ElementsAre(200, 200, 200, 200, 200, 400));
	drain();
	EXPECT_THAT(files(), ElementsAre("a.bin"));
}

TEST_F(UploadFault, ABodyThatMemoryCannotNumberIsRefused)
{
	expectRefusal(sparse("large", 0x7FFFFFFF), Type::PUT);
	expectRefusal(sparse("larger", 5'000'000'000), Type::PUT);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: Can't read File: " + dir.path("large")), 2);
}

TEST_F(UploadFault, ADiskThatIsFullLeavesTheFileAsItWas)
{
	const std::string path = dir.write("a.bin", thousand);
	for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		for (const auto room : {1000ul, 1010ul})
		{
			EXPECT_EQ(codeUnder(path, type, room), 400);
			EXPECT_EQ(dir.read("a.bin"), thousand);
			EXPECT_THAT(files(), ElementsAre("a.bin")) << "a copy that was made goes, too";
		}
	}
	EXPECT_EQ(codeUnder(path, Type::PUT_STREAM_COPY, 600, true), 400) << "a part of a copy must not travel";
	EXPECT_THAT(files(), ElementsAre("a.bin"));
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen), 5);
	EXPECT_EQ(run(put(sink.url(), path, Type::PUT_STREAM_MP)).statusCode, 200) << "nothing blocks the file afterwards";
}

TEST_F(UploadFault, ACopyThatHasNoPlaceIsRefused)
{
	// The file name occurs in the directory as well, so that the copy would have to go into one that is not there.
	expectRefusal(dir.write("A.BIN/a.bin", "hello"), Type::PUT_STREAM_COPY);
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen), 1);
	EXPECT_THAT(files(), ElementsAre("A.BIN", "A.BIN/a.bin"));
	EXPECT_EQ(dir.read("A.BIN/a.bin"), "hello");
}

TEST_F(UploadFault, AFileIsInOneUploadThatChangesItAtATime)
{
	Lab::Gate gate;
	UploadSink slow(gate), quick;
	const std::string path = dir.write("a.bin", thousand);
	execute(put(slow.url(), path, Type::PUT_STREAM_MP));
	EXPECT_FALSE(library().isFileBlocked(text(path))) << "that is said of those that wait for their repair";
	fs::create_symlink(path, dir.path("link"));
	fs::create_hard_link(path, dir.path("twin"));
	const auto expectNobodyTouchesIt = [&](int times)
	{
		for (const std::string& name : {path, dir.path("link"), dir.path("twin")})
		{
			EXPECT_THAT(codes(ofEveryKind(sink.url(), name)), Each(400)) << name;
			UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload::E_ad, text(name));
			EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: " + name), times);
		}
		EXPECT_EQ(dir.read("a.bin"), thousand + tail(1000));
	};
	expectNobodyTouchesIt(1);
	library().setUploadGracePeriod(60);
	EXPECT_THAT(codes(put(quick.url(), dir.write("A.bin", "other"), Type::PUT_STREAM_MP)), ElementsAre(200)) << "another file";
	gate.open();
	ASSERT_TRUE(waitForCompletions());
	EXPECT_EQ(completions[0].statusCode, 200);
	EXPECT_TRUE(library().isFileBlocked(text(path)) && library().isFileBlocked(text(dir.path("A.BIN"))));
	EXPECT_TRUE(UCorvaneBPLibrary::hasPendingWork());
	expectNobodyTouchesIt(2);
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen + path), 12);
	EXPECT_EQ(sink.connections(), 0u);
	loop.Shutdown();
	EXPECT_EQ(dir.read("a.bin") + dir.read("A.bin"), thousand + "other");
}

TEST_F(UploadFault, AFileThatEndsInItsOwnTailIsRefused)
{
	const std::pair<std::string, int> cases[] = {
		{thousand + tail(1000), 400}, // as a crash has left it, or another program has it in hand
		{tail(0), 400},
		{thousand + tail(999), 200},
		{thousand + tail(1000) + "\r\n", 200},
		{thousand.substr(2) + "xx" + tail(1000).substr(2), 200},
	};
	for (const auto& [content, code] : cases)
	{
		const std::string path = dir.write("a.bin", content);
		EXPECT_THAT(codes(ofEveryKind(sink.url(), path)), Each(code)) << content.substr(content.size() - 30);
		drain();
		EXPECT_EQ(dir.read("a.bin"), content);
		EXPECT_THAT(files(), ElementsAre("a.bin"));
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen + dir.path("a.bin")), 12);
	EXPECT_EQ(sink.log().size(), 18u);
}

TEST_F(UploadFault, ARedirectThatAsksForTheBodyAgainIsTold)
{
	Lab::Origin server;
	const std::string path = dir.write("a.bin", "hello");
	const TArray<FhttpRequest> posted = post(server.url(), path), streamed = put(server.url(), path, Type::PUT_STREAM_BLANK);
	for (const int code : {301, 302, 303, 307, 308})
	{
		server.at("/", Lab::redirect({.to = "/page", .code = code}));
		server.at("/page", Lab::upload({.refusesAfter = 0, .code = 200})); // the length of the body is announced to it, too
		const bool bPostAgain = code >= 307, bPutAgain = code != 303; // or as a GET
		EXPECT_EQ(run(posted).statusCode, bPostAgain ? 500 : 200) << code;
		EXPECT_EQ(run(streamed).statusCode, bPutAgain ? 500 : 200) << code;
		const std::string message = "UCorvaneBPLibrary: The server sent the upload on to another address (";
		EXPECT_EQ(logged(ELogVerbosity::Warning, message + std::to_string(code) + ")"), bPostAgain + bPutAgain);
	}
}

TEST_F(UploadFault, AnyNumberOfUploadsReadOneFileAtOnce)
{
	const std::string content(50000, 'x');
	const std::string path = dir.write("a.bin", content);
	TArray<FhttpRequest> requests;
	for (int round = 0; round < 30; ++round)
	{
		requests.Append(put(sink.url(), path, everyType[round % 3]));
	}
	execute(requests);
	execute(put(sink.url(), path, Type::PUT_STREAM_MP));
	drain();
	EXPECT_EQ(completions.size(), 31u);
	EXPECT_THAT(completions, Each(testing::Field(&Completion::statusCode, 200)));
	EXPECT_THAT(files(), ElementsAre("a.bin"));
	EXPECT_TRUE(dir.read("a.bin") == content);
}

TEST_F(UploadFault, WhatAFileBecomesDuringItsUploadIsKept)
{
	const std::string content(8 << 20, 'x'); // more than sockets take before the other end reads
	const std::string longer(9 << 20, 'n');
	const auto append = [](const std::string& path) { std::ofstream(path, std::ios::app) << "more"; };
	const auto rewrite = [](const std::string& path) { std::ofstream(path) << "new"; };
	const auto overwrite = [&](const std::string& path) { std::ofstream(path, std::ios::in | std::ios::out) << longer; };
	const auto remove = [](const std::string& path) { fs::remove(path); };
	// What is done to the file, what the upload tells, what is there afterwards, and how often the log has told of a failed repair.
	const std::tuple<std::function<void(const std::string& path)>, int, std::string, int> cases[] = {
		{append, 200, content + tail(content.size()) + "more", 1},
		{rewrite, 500, "new", 2},
		{overwrite, 200, longer, 3},
		{remove, 200, "", 3},
	};
	for (const auto& [change, code, after, failed] : cases)
	{
		Lab::Gate gate;
		UploadSink slow(gate);
		const std::string path = dir.write("a.bin", content);
		execute(put(slow.url(), path, Type::PUT_STREAM_MP));
		change(path);
		gate.open();
		drain();
		EXPECT_EQ(completions.back().statusCode, code) << failed;
		EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: " + path), failed);
		EXPECT_TRUE((dir.exists("a.bin") ? dir.read("a.bin") : "") == after) << failed;
	}
	EXPECT_EQ(completions.size(), 4u);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: Can't read File: " + dir.path("a.bin")), 1);
	EXPECT_FALSE(dir.exists("a.bin"));
	EXPECT_EQ(logged(ELogVerbosity::Display, "truncate okay"), 0);
	EXPECT_FALSE(library().isFileBlocked(text(dir.path("a.bin"))));
}

TEST_F(UploadToBadServer, LeavesNoTraceOnDiskAndTellsWhatItWasAnswered)
{
	const std::string large(8 << 20, 'x');
	const Lab::Behaviour expectsNothing(
		[](const Lab::Request& request, Lab::Plan& plan) { plan.status = request.header("Expect").empty() ? plan.status : 417; });
	const std::pair<Lab::Behaviour, const char*> cases[] = {
		{{{Lab::upload({.refusesAfter = 0}), "too large"}}, "413 too large"},
		{{{Lab::upload({.refusesAfter = 0}), "too large", Lab::dropAfter(3)}}, "413 too"},
		{Lab::upload({.hangsUpAfter = 1000}), "500 No Response"},
		{Lab::upload({.bytesPerSecond = 1}), "500 No Response"},
		{Lab::stall(), "500 No Response"},
		{{{Lab::upload({.refusesAfter = 0, .code = 202}), expectsNothing, "fine"}}, "202 fine"},
	};
	for (const auto& [serve, told] : cases)
	{
		Lab::Origin server;
		server.at("/", serve);
		completions.clear();
		for (const Type type : everyType)
		{
			execute(put(server.url(), dir.write(std::to_string(static_cast<int>(type)) + ".bin", large), type));
		}
		drain();
		EXPECT_EQ(completions.size(), 4u);
		EXPECT_THAT(completions, Each(testing::Property(&Completion::brief, told)));
		EXPECT_THAT(files(), ElementsAre("0.bin", "1.bin", "2.bin", "3.bin")) << told;
		EXPECT_TRUE(dir.read(std::to_string(static_cast<int>(Type::PUT_STREAM_MP)) + ".bin") == large) << told;
	}
}

TEST_F(UploadFault, MayBeCancelledAtAnyMoment)
{
	const std::string content(3 << 20, 'x');
	dir.write("a.bin", content);
	for (int moment = 0; moment < 24; ++moment)
	{
		completions.clear();
		const uint64 begun = sink.requests();
		execute(put(sink.url(), dir.path("a.bin"), everyType[moment % 4], {"f", {}, {}, "soon"}));
		if (moment >= 4)
		{
			ASSERT_TRUE(waitFor([&] { return sink.requests() > begun; }));
			until([&, number = 0]() mutable { return ++number > moment / 4 || !uploads.empty(); });
		}
		UCorvaneBPLibrary::cancelRequest("soon");
		drain();
		ASSERT_EQ(completions.size(), 1u);
		EXPECT_THAT(completions[0].statusCode, testing::AnyOf(200, 500)); // it may have been faster
		ASSERT_THAT(files(), ElementsAre("a.bin")) << moment;
		ASSERT_TRUE(dir.read("a.bin") == content) << moment;
	}
}

TEST_F(UploadFault, LargeFilesKeepTheirSizeToo)
{
	Lab::Gate never;
	UploadSink slow(never);
	const std::string path = sparse("large.bin", 3'000'000'000);
	execute(put(slow.url(), path, Type::PUT_STREAM_MP, {"f", {}, {}, "large"}));
	EXPECT_EQ(fs::file_size(path), 3'000'000'000 + tail("-1294967296").size());
	bool found = false;
	int64 originalFileSize = 0;
	UCorvaneBPLibrary::searchUploadLeftovers(EHTTPCorvFileUpload::E_ad, text(path), found, originalFileSize);
	EXPECT_TRUE(found && originalFileSize == 3'000'000'000);
	UCorvaneBPLibrary::cancelRequest("large");
	drain();
	EXPECT_EQ(fs::file_size(path), 3'000'000'000u);
}
