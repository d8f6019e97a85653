#include "Host/Objects.h"
#include "UploadFixture.h"

#include <csignal>
#include <fstream>
#include <map>
#include <sys/resource.h>
#include <unistd.h>

using testing::ElementsAre;

namespace
{
	namespace fs = std::filesystem;

	class UploadFault : public UploadTest
	{
	protected:
		explicit UploadFault(FGameLoopSettings settings = {})
			: UploadTest(settings)
		{
		}

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
			EXPECT_EQ(sink.connectionCount(), 0);
		}

		UploadSink sink;
	};

	/** Where a peer may be silent for a short while only. */
	class UploadToBadServer : public UploadFault
	{
	protected:
		UploadToBadServer()
			: UploadFault(settings())
		{
		}

		static FGameLoopSettings settings()
		{
			FGameLoopSettings settings;
			settings.http.activityTimeoutSeconds = 0.6;
			return settings;
		}
	};

	constexpr EHTTPCorvFileUploadType everyType[] = {EHTTPCorvFileUploadType::PUT, EHTTPCorvFileUploadType::PUT_STREAM_BLANK,
		EHTTPCorvFileUploadType::PUT_STREAM_COPY, EHTTPCorvFileUploadType::PUT_STREAM_MP};

	/** Lowers the limit for the size of files for its scope. */
	class FileSizeLimit
	{
	public:
		explicit FileSizeLimit(rlim_t bytes)
		{
			std::signal(SIGXFSZ, SIG_IGN);
			getrlimit(RLIMIT_FSIZE, &before);
			const rlimit lowered{bytes, before.rlim_max};
			setrlimit(RLIMIT_FSIZE, &lowered);
		}
		~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }

	private:
		rlimit before{};
	};

	/** A disk that has room again as soon as a write has found it full. */
	class FullForOneWrite : public FileSizeLimit
	{
	public:
		explicit FullForOneWrite(rlim_t bytes)
			: FileSizeLimit(bytes)
		{
			std::signal(SIGXFSZ,
				[](int)
				{
					rlimit limit{};
					getrlimit(RLIMIT_FSIZE, &limit);
					limit.rlim_cur = limit.rlim_max;
					setrlimit(RLIMIT_FSIZE, &limit);
				});
		}
		~FullForOneWrite() { std::signal(SIGXFSZ, SIG_IGN); }
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

	/** A file of so many bytes that takes no room on disk. */
	std::string sparse(const TempDir& dir, const std::string& name, std::uintmax_t size, const std::string& end = "")
	{
		const std::string path = dir.write(name, "");
		fs::resize_file(path, size);
		std::ofstream(path, std::ios::binary | std::ios::app) << end;
		return path;
	}
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
}

TEST_F(UploadFault, OneMissingFileRefusesTheWholeForm)
{
	TArray<FhttpRequest> requests;
	FString id;
	UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST({}, text(sink.url()), {}, EHTTPCorvFileUpload::E_ad,
		{text(dir.write("1", "x")), text(dir.path("2")), text(dir.path("3"))}, {"f"}, {}, "", requests, id);
	EXPECT_EQ(run(requests).statusCode, 400);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: File not found: "), 1);
	EXPECT_EQ(sink.connectionCount(), 0);
}

TEST_F(UploadFault, FilesThatCannotBeOpenedAreRefused)
{
	const std::string path = dir.write("a.bin", "hello");
	fs::permissions(path, fs::perms::none);
	fs::permissions(dir.path(), fs::perms::all);
	for (const Type type : everyType)
	{
		const TArray<FhttpRequest> requests = put(sink.url(), path, type);
		{
			const OrdinaryUser user;
			execute(requests);
		}
		drain();
		EXPECT_EQ(completions.back().statusCode, 400);
	}
	EXPECT_EQ(completions.size(), 4u);
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
	for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_COPY})
	{
		EXPECT_EQ(run(put(sink.url(), path, type)).statusCode, 200) << static_cast<int>(type);
	}
	EXPECT_THAT(files(), ElementsAre("a.bin"));
}

TEST_F(UploadFault, ABodyThatMemoryCannotNumberIsRefused)
{
	expectRefusal(sparse(dir, "large", 0x7FFFFFFF), Type::PUT);
	expectRefusal(sparse(dir, "larger", 5'000'000'000), Type::PUT);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary: Can't read File: " + dir.path("large")), 2);
}

TEST_F(UploadFault, ADiskThatIsFullLeavesTheFileAsItWas)
{
	const std::string path = dir.write("a.bin", std::string(1000, 'x'));
	for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		for (const rlim_t room : {rlim_t(1000), rlim_t(1010)})
		{
			const TArray<FhttpRequest> requests = put(sink.url(), path, type);
			{
				const FileSizeLimit limit(room);
				execute(requests);
			}
			drain();
			EXPECT_EQ(completions.back().statusCode, 400);
			EXPECT_EQ(dir.read("a.bin"), std::string(1000, 'x'));
			EXPECT_THAT(files(), ElementsAre("a.bin")) << "a copy that was made goes, too";
		}
	}
	const TArray<FhttpRequest> cutShort = put(sink.url(), path, Type::PUT_STREAM_COPY);
	{
		const FullForOneWrite limit(600);
		execute(cutShort);
	}
	drain();
	EXPECT_EQ(completions.back().statusCode, 400) << "a part of a copy must not travel";
	EXPECT_THAT(files(), ElementsAre("a.bin"));
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen), 5);
	EXPECT_EQ(run(put(sink.url(), path, Type::PUT_STREAM_MP)).statusCode, 200) << "nothing blocks the file afterwards";
}

TEST_F(UploadFault, ACopyThatHasNoPlaceIsRefused)
{
	// The file name occurs in the directory as well, so that the copy would have to go into one that is not there.
	const std::string path = dir.write("A.BIN/a.bin", "hello");
	expectRefusal(path, Type::PUT_STREAM_COPY);
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen), 1);
	EXPECT_THAT(files(), ElementsAre("A.BIN", "A.BIN/a.bin"));
	EXPECT_EQ(dir.read("A.BIN/a.bin"), "hello");
}

TEST_F(UploadFault, AFileIsInOneUploadThatChangesItAtATime)
{
	Gate gate;
	UploadSink slow(&gate);
	std::map<std::string, int> left; // files that a repair has left alone, and how often
	const std::string path = dir.write("a.bin", std::string(1000, 'x'));
	execute(put(slow.url(), path, Type::PUT_STREAM_MP));
	EXPECT_EQ(dir.read("a.bin"), std::string(1000, 'x') + tail(1000));
	EXPECT_FALSE(library().isFileBlocked(text(path))) << "that is said of those that wait for their repair";
	fs::create_symlink(path, dir.path("link"));
	fs::create_hard_link(path, dir.path("twin"));
	const auto expectNobodyTouchesIt = [&]
	{
		for (const std::string& name : {path, dir.path("link"), dir.path("twin")})
		{
			TArray<FhttpRequest> requests = post(sink.url(), name);
			requests.Append(individual(sink.url(), name));
			for (const Type type : everyType)
			{
				requests.Append(put(sink.url(), name, type));
			}
			for (const FhttpRequest& request : requests)
			{
				completions.clear();
				execute({request});
				ASSERT_TRUE(waitForCompletions());
				EXPECT_EQ(completions[0].statusCode, 400) << name << static_cast<int>(request.requestType);
			}
			UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload::E_ad, text(name));
			EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: " + name), ++left[name]);
		}
		EXPECT_EQ(dir.read("a.bin"), std::string(1000, 'x') + tail(1000));
	};
	expectNobodyTouchesIt();

	completions.clear();
	library().setUploadGracePeriod(60);
	UploadSink quick;
	execute(put(quick.url(), dir.write("A.bin", "other"), Type::PUT_STREAM_MP));
	ASSERT_TRUE(waitForCompletions());
	EXPECT_EQ(completions[0].statusCode, 200) << "another file to this file system";

	completions.clear();
	gate.open();
	ASSERT_TRUE(waitForCompletions());
	EXPECT_EQ(completions[0].statusCode, 200);
	EXPECT_TRUE(library().isFileBlocked(text(path)));
	EXPECT_TRUE(library().isFileBlocked(text(dir.path("A.BIN"))));
	EXPECT_TRUE(UCorvaneBPLibrary::hasPendingWork());
	expectNobodyTouchesIt();
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen + path), 12);
	EXPECT_EQ(sink.connectionCount(), 0);
	loop.Shutdown();
	EXPECT_EQ(dir.read("a.bin") + dir.read("A.bin"), std::string(1000, 'x') + "other");
}

TEST_F(UploadFault, AFileThatEndsInItsOwnTailIsRefused)
{
	const std::string thousand(1000, 'x');
	const auto answers = [&](const std::string& content)
	{
		const std::string path = dir.write("a.bin", content); // as a crash has left it, or another program has it in hand
		TArray<FhttpRequest> requests = post(sink.url(), path);
		requests.Append(individual(sink.url(), path));
		for (const Type type : everyType)
		{
			requests.Append(put(sink.url(), path, type));
		}
		std::vector<int> codes;
		for (const FhttpRequest& request : requests)
		{
			codes.push_back(run({request}).statusCode);
		}
		EXPECT_EQ(dir.read("a.bin"), content);
		EXPECT_THAT(files(), ElementsAre("a.bin"));
		return codes;
	};
	EXPECT_THAT(answers(thousand + tail(1000)), testing::Each(400));
	EXPECT_THAT(answers(tail(0)), testing::Each(400));
	EXPECT_EQ(logged(ELogVerbosity::Error, stillOpen + dir.path("a.bin")), 12);
	EXPECT_EQ(sink.connectionCount(), 0);
	for (const std::string& own : {thousand + tail(999), thousand + tail(1000) + "\r\n", thousand.substr(2) + "xx" + tail(1000).substr(2)})
	{
		EXPECT_THAT(answers(own), testing::Each(200)) << own.substr(990);
	}
}

TEST_F(UploadFault, ARedirectThatAsksForTheBodyAgainIsTold)
{
	std::string code;
	RawServer server(
		[&](Connection& connection)
		{
			for (;;)
			{
				const std::string head = connection.readHead();
				if (head.starts_with("GET"))
				{
					connection.send(answer(200, ""));
					continue;
				}
				connection.read(std::stoul(Received{head, ""}.header("Content-Length")));
				connection.send(answer(std::stoi(code), "", "Location: /\r\n"));
			}
		});
	const std::string path = dir.write("a.bin", "hello");
	struct Case
	{
		TArray<FhttpRequest> request;
		std::vector<const char*> again, asGet; // codes
	};
	for (const Case& c : {Case{post(server.url(), path), {"307", "308"}, {"301", "302", "303"}},
			 {put(server.url(), path, Type::PUT_STREAM_BLANK), {"301", "302", "307", "308"}, {"303"}}})
	{
		const int before = logged(ELogVerbosity::Warning, "UCorvaneBPLibrary: The server sent the upload on to another address (");
		for (const char* number : c.again)
		{
			code = number;
			EXPECT_EQ(run(c.request).statusCode, 500) << code;
			EXPECT_GE(logged(ELogVerbosity::Warning, "another address (" + code + ")"), 1);
		}
		for (const char* number : c.asGet)
		{
			code = number;
			EXPECT_EQ(run(c.request).statusCode, 200) << code;
		}
		EXPECT_EQ(logged(ELogVerbosity::Warning, "another address (") - before, static_cast<int>(c.again.size()));
	}
}

TEST_F(UploadFault, AnyNumberOfUploadsReadOneFileAtOnce)
{
	const std::string path = dir.write("a.bin", std::string(50000, 'x'));
	TArray<FhttpRequest> requests;
	for (int round = 0; round < 10; ++round)
	{
		for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_COPY})
		{
			requests.Append(put(sink.url(), path, type));
		}
	}
	execute(requests);
	execute(put(sink.url(), path, Type::PUT_STREAM_MP));
	drain();
	ASSERT_EQ(completions.size(), 31u);
	for (const Completion& completion : completions)
	{
		EXPECT_EQ(completion.statusCode, 200);
	}
	EXPECT_THAT(files(), ElementsAre("a.bin"));
	EXPECT_TRUE(dir.read("a.bin") == std::string(50000, 'x'));
}

TEST_F(UploadFault, WhatAFileBecomesDuringItsUploadIsKept)
{
	const std::string content(8 << 20, 'x'); // more than sockets take before the other end reads
	struct Case
	{
		const char* name;
		std::function<void(const std::string& path)> change;
		int statusCode;
		std::string after;
		int failed; // truncations that the log tells of
	};
	const auto append = [](const std::string& path) { std::ofstream(path, std::ios::app) << "more"; };
	const auto rewrite = [](const std::string& path) { std::ofstream(path) << "new"; };
	const std::string longer(9 << 20, 'n');
	const auto overwrite = [&](const std::string& path) { std::ofstream(path, std::ios::in | std::ios::out) << longer; };
	const Case cases[] = {
		{"grows", append, 200, content + tail(content.size()) + "more", 1},
		{"shrinks", rewrite, 500, "new", 1},
		{"is rewritten", overwrite, 200, longer, 1},
		{"goes", [](const std::string& path) { fs::remove(path); }, 200, "", 0},
	};
	for (const Case& c : cases)
	{
		Gate gate;
		UploadSink slow(&gate);
		const std::string path = dir.write("a.bin", content);
		const TArray<FhttpRequest> requests = put(slow.url(), path, Type::PUT_STREAM_MP);
		const int failedBefore = logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: " + path);
		UCorvaneBPLibrary* target = nullptr;
		UCorvaneBPLibrary::executeHttpRequests(requests, target);
		c.change(path);
		gate.open();
		drain();
		EXPECT_EQ(completions.back().statusCode, c.statusCode) << c.name;
		EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: " + path) - failedBefore, c.failed) << c.name;
		EXPECT_EQ(dir.exists("a.bin"), !c.after.empty());
		if (!c.after.empty())
		{
			EXPECT_TRUE(dir.read("a.bin") == c.after) << c.name;
		}
	}
	EXPECT_EQ(completions.size(), 4u);
	EXPECT_EQ(logged(ELogVerbosity::Display, "truncate okay"), 0);
	EXPECT_FALSE(library().isFileBlocked(text(dir.path("a.bin"))));
}

TEST_F(UploadToBadServer, LeavesNoTraceOnDisk)
{
	const std::string large(2 << 20, 'x');
	struct Case
	{
		const char* name;
		RawServer::Script script;
		std::vector<int> statusCodes; // any of them
	};
	const std::string refusal = answer(413, "too large", "Connection: close\r\n");
	const Case cases[] = {
		{"refuses early, reads on",
			[&](Connection& connection)
			{
				connection.readHead();
				connection.send(refusal);
				connection.waitForPeer();
			},
			{413}},
		{"refuses early and closes", // the bytes on their way make this a reset, which may overtake the answer
			[&](Connection& connection)
			{
				connection.readHead();
				connection.send(refusal);
			},
			{413, 500}},
		{"closes in the middle",
			[](Connection& connection)
			{
				connection.readHead();
				connection.read(1000);
			},
			{500}},
		{"resets at once", [](Connection& connection) { connection.reset(); }, {500}},
		{"never reads",
			[](Connection& connection)
			{
				Gate never;
				connection.waitFor(never);
			},
			{500}},
		{"reads all and never answers", [](Connection& connection) { connection.waitForPeer(); }, {500}},
		{"wants to be asked first",
			[&](Connection& connection)
			{
				const std::string head = connection.readHead();
				connection.send("HTTP/1.1 100 Continue\r\n\r\n");
				connection.read(large.size());
				connection.send(answer(201, "made", "Connection: close\r\n"));
				connection.waitForPeer();
			},
			{201}},
		{"fails expectations",
			[](Connection& connection)
			{
				const std::string head = connection.readHead();
				connection.send(answer(head.find("Expect") == head.npos ? 202 : 417, "", "Connection: close\r\n"));
				connection.waitForPeer();
			},
			{202}},
	};
	const std::vector<std::string> names = {"0.bin", "1.bin", "2.bin", "3.bin"};
	for (const std::string& name : names)
	{
		dir.write(name, large);
	}
	for (const Case& c : cases)
	{
		RawServer server(c.script);
		completions.clear();
		for (size_t number = 0; number < names.size(); ++number)
		{
			execute(put(server.url(), dir.path(names[number]), everyType[number]));
		}
		drain();
		ASSERT_EQ(completions.size(), 4u) << c.name;
		for (const Completion& completion : completions)
		{
			EXPECT_THAT(c.statusCodes, testing::Contains(completion.statusCode)) << c.name;
		}
		EXPECT_EQ(files(), names) << c.name;
		EXPECT_TRUE(dir.read("3.bin") == large) << c.name;
	}
}

TEST_F(UploadFault, MayBeCancelledAtAnyMoment)
{
	const std::string content(3 << 20, 'x');
	dir.write("a.bin", content);
	for (int moment = 0; moment < 24; ++moment)
	{
		const Type type = everyType[moment % 4];
		completions.clear();
		const size_t begun = sink.begun();
		execute(put(sink.url(), dir.path("a.bin"), type, {"f", {}, {}, "soon"}));
		if (moment >= 4)
		{
			ASSERT_TRUE(waitFor([&] { return sink.begun() > begun; }));
			loop.WaitFor([&, number = 0]() mutable { return ++number > moment / 4 || !uploads.empty(); }, patienceSeconds);
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
	Gate never;
	UploadSink slow(&never);
	constexpr std::uintmax_t size = 3'000'000'000;
	const std::string path = sparse(dir, "large.bin", size);
	execute(put(slow.url(), path, Type::PUT_STREAM_MP, {"f", {}, {}, "large"}));
	const std::string written = "\r\n------UE4CorvanePlugin_-1294967296--\r\n";
	EXPECT_EQ(fs::file_size(path), size + written.size());
	bool found = false;
	int64 originalFileSize = 0;
	UCorvaneBPLibrary::searchUploadLeftovers(EHTTPCorvFileUpload::E_ad, text(path), found, originalFileSize);
	EXPECT_TRUE(found);
	EXPECT_EQ(originalFileSize, 3'000'000'000);
	UCorvaneBPLibrary::cancelRequest("large");
	drain();
	EXPECT_EQ(fs::file_size(path), size);
}

TEST_F(UploadFault, ARefusalBeforeTheEndIsToldWithItsText)
{
	const std::string path = dir.write("a.bin", std::string(24 << 20, 'x'));
	for (const Type type : everyType)
	{
		for (const bool complete : {true, false})
		{
			RawServer server(
				[&](Connection& connection)
				{
					connection.readHead();
					connection.read(100000);
					const std::string page = answer(413, "too large", "Connection: close\r\n");
					connection.send(complete ? page : page.substr(0, page.size() - 6));
					connection.closeWrite();
					connection.waitForPeer(); // a reset would take the answer away again
				});
			const Completion result = run(put(server.url(), path, type));
			EXPECT_EQ(result.statusCode, 413) << static_cast<int>(type) << complete;
			EXPECT_EQ(result.dataString, complete ? "too large" : "too");
		}
	}
	EXPECT_EQ(fs::file_size(path), 24u << 20);
}
