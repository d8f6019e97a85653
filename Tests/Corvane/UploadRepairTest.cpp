#include "Host/SystemThreads.h"
#include "NoThreads.h"
#include "UploadFixture.h"
#include "Uploads/ChangedFiles.h"

#include <fstream>

using testing::ElementsAre;

namespace
{
	namespace fs = std::filesystem;
	using Record = EHTTPCorvRequestType;

	constexpr int64 none = -77;

	class UploadRepair : public UploadTest
	{
	protected:
		static FhttpRequest record(Record type, const std::string& path, int64 size)
		{
			FhttpRequest made;
			made.requestType = type;
			made.filePath = text(path);
			made.originalFileSize = size;
			return made;
		}

		/** Writes a file as a stream multipart upload leaves it. @return the record of that upload. */
		FhttpRequest streamed(const std::string& name, const std::string& content) const
		{
			return record(Record::PUT_STREAM_MP, dir.write(name, content + tail(content.size())), static_cast<int64>(content.size()));
		}

		/** Hands a record over as a completion does. */
		static void add(FhttpRequest made) { library().addRequestToTruncateThread(made); }

		/** The same, and waits for the repair. */
		void repair(const FhttpRequest& made)
		{
			add(made);
			drain();
			EXPECT_FALSE(library().isFileBlocked(made.filePath)) << "whatever the record holds";
		}

		/** @return the size found, or what the output held before. */
		static int64 search(const std::string& path)
		{
			bool found = false;
			int64 size = none;
			UCorvaneBPLibrary::searchUploadLeftovers(EHTTPCorvFileUpload::E_ad, text(path), found, size);
			EXPECT_EQ(found, size != none);
			return size;
		}

		static void repairLeftover(const std::string& path)
		{
			EXPECT_FALSE(UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload::E_ad, text(path))) << "also when it succeeds";
		}

		int okay() const { return logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate okay: "); }
		int failed() const { return logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: "); }
	};
} // namespace

TEST_F(UploadRepair, CutsAFileThatIsExactlyAsTheUploadLeftIt)
{
	const std::tuple<std::string, int64, bool> cases[] = {
		{thousand + tail(1000), 1000, true},
		{"x" + tail(1), 1, true},
		{thousand, 1000, false},
		{"", 1000, false},
		{std::string(5000, 'n'), 1000, false}, // rewritten, and longer
		{thousand + tail(1000) + "more", 1000, false},
		{std::string(33, 'x') + thousand, 1000, false}, // the right length
		{"x" + thousand + tail(1000), 1000, false},
		{thousand.substr(1) + tail(1000), 1000, false},
		{thousand + tail(1000), 900, false},
	};
	for (const auto& [file, size, bCut] : cases)
	{
		const int before = okay();
		repair(record(Record::PUT_STREAM_MP, dir.write("a.bin", file), size));
		EXPECT_EQ(dir.read("a.bin"), bCut ? file.substr(0, static_cast<size_t>(size)) : file);
		EXPECT_EQ(okay() - before, bCut);
	}
	EXPECT_EQ(okay() + failed(), static_cast<int>(std::size(cases)));
}

TEST_F(UploadRepair, LeavesAloneWhatNoUploadChanged)
{
	const std::string file = thousand + tail(1000);
	const std::string path = dir.write("a.bin", file);
	const std::string inside = dir.write("d_UEUploadCopy_/a", "x"), copy = dir.write("a_UEUploadCopy_G.x", "x");
	for (const FhttpRequest& made : {record(Record::PUT_STREAM_MP, path, 0), record(Record::PUT_STREAM_MP, "", 1000),
			 record(Record::PUT_STREAM_MP, dir.path("missing"), 1000), record(Record::PUT_STREAM_MP, dir.path(), 1000),
			 record(Record::GET, path, 1000), record(Record::PUT_STREAM_BLANK, path, 1000), record(Record::PUT_STREAM_COPY, path, 1000),
			 record(Record::PUT_STREAM_COPY, inside, 5), record(Record::GET, copy, 5), record(Record::PUT, copy, 5),
			 record(Record::PUT_STREAM_BLANK, copy, 5), record(Record::POST_UPLOAD, copy, 5)})
	{
		repair(made);
		EXPECT_EQ(dir.read("a.bin"), file) << "a record of a copy that names the source must not delete it";
	}
	EXPECT_EQ(okay() + failed(), 0);
	EXPECT_THAT(files(), ElementsAre("a.bin", "a_UEUploadCopy_G.x", "d_UEUploadCopy_", "d_UEUploadCopy_/a"));
	repair(record(Record::PUT_STREAM_COPY, copy, 0));
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy has been deleted: " + copy), 1);
	EXPECT_FALSE(fs::exists(copy));
	repair(record(Record::PUT_STREAM_COPY, copy, 1));
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy could not be deleted: " + copy), 1);
}

TEST_F(UploadRepair, AFileIsBlockedUntilAllItsRecordsAreHandled)
{
	library().setUploadGracePeriod(3600);
	const FhttpRequest made = streamed("a.bin", thousand);
	EXPECT_FALSE(library().isFileBlocked(made.filePath)) << "nothing was ever uploaded";
	add(made);
	add(made);
	EXPECT_TRUE(library().isFileBlocked(made.filePath));
	library().changedFileList().endRepair(made.filePath);
	EXPECT_TRUE(library().isFileBlocked(made.filePath)) << "a second record waits";
	library().changedFileList().endRepair(made.filePath);
	EXPECT_FALSE(library().isFileBlocked(made.filePath));
	loop.Shutdown();
	EXPECT_TRUE(okay() == 1 && failed() == 1);
	EXPECT_EQ(dir.read("a.bin"), thousand);
}

TEST_F(UploadRepair, IsDoneAtOnceWhenTheSystemHasNoThreadToGive)
{
	library().setUploadGracePeriod(3600);
	HostThreads::JoinIdle();
	const NoThreads limit;
	for (const FhttpRequest& made :
		{streamed("a.bin", thousand), record(Record::PUT_STREAM_COPY, dir.write("a_UEUploadCopy_0123.bin", "x"), 1)})
	{
		add(made);
		EXPECT_FALSE(library().isFileBlocked(made.filePath) || UCorvaneBPLibrary::hasPendingWork());
	}
	EXPECT_THAT(files(), ElementsAre("a.bin"));
	EXPECT_EQ(dir.read("a.bin"), thousand);
}

TEST_F(UploadRepair, TheGracePeriodIsGivenToEveryRecord)
{
	using namespace std::chrono;
	library().setUploadGracePeriod(0.1);
	const auto start = steady_clock::now();
	for (int number = 0; number < 3; ++number)
	{
		add(streamed(std::to_string(number), "x"));
	}
	ASSERT_TRUE(waitFor([this] { return okay() >= 1; }));
	EXPECT_GE(steady_clock::now() - start, milliseconds(98)) << "later records do not cut the wait short";
	drain();
	EXPECT_GE(steady_clock::now() - start, milliseconds(295));
	EXPECT_EQ(okay(), 3);
}

TEST_F(UploadRepair, WaitsTwoSecondsUnlessToldOtherwise)
{
	loop.Shutdown();
	FGameLoop fresh;
	add(streamed("a.bin", "x"));
	EXPECT_FALSE(fresh.WaitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); }, 0.1));
	EXPECT_EQ(dir.read("a.bin"), "x" + tail(1));
	fresh.Shutdown();
	EXPECT_EQ(dir.read("a.bin"), "x") << "the end of the program does not wait";
}

TEST_F(UploadRepair, ARecordIsUploadedAgainAfterTheRepair)
{
	UploadSink sink;
	const TArray<FhttpRequest> requests = put(sink.url(), dir.path("a.bin"), Type::PUT_STREAM_MP);
	dir.write("a.bin", thousand);
	for (int round = 0; round < 4; ++round)
	{
		EXPECT_EQ(run(requests).statusCode, 200);
		EXPECT_EQ(dir.read("a.bin"), round == 3 ? "" : thousand);
		dir.write("a.bin", round >= 2 ? "" : thousand); // an empty file is sent from memory
	}
	EXPECT_TRUE(okay() == 3 && failed() == 0);
}

TEST_F(UploadRepair, TheEndOfTheProgramRepairsWhatIsQueuedAndWhatRuns)
{
	library().setUploadGracePeriod(3600);
	Lab::Gate never;
	UploadSink silent(never), sink;
	execute(put(sink.url(), dir.write("done.bin", thousand), Type::PUT_STREAM_MP));
	execute(put(sink.url(), dir.write("copied.bin", thousand), Type::PUT_STREAM_COPY));
	ASSERT_TRUE(waitForCompletions(2));
	execute(put(silent.url(), dir.write("running.bin", thousand), Type::PUT_STREAM_MP));
	execute(put(silent.url(), dir.write("copying.bin", thousand), Type::PUT_STREAM_COPY));
	// Stands for an upload whose completion never comes.
	library().changedFileList().begin(streamed("stuck.bin", thousand));
	EXPECT_EQ(dir.read("done.bin"), thousand + tail(1000));
	loop.Shutdown();
	EXPECT_THAT(files(), ElementsAre("copied.bin", "copying.bin", "done.bin", "running.bin", "stuck.bin"));
	for (const std::string& name : files())
	{
		EXPECT_EQ(dir.read(name), thousand) << name;
	}
}

TEST_F(UploadRepair, LeftoversAreFoundByTheirTailAndCutOffWhereTheyFit)
{
	struct Case
	{
		std::string file;
		int64 found;
		int64 after = -1; // bytes, if it is cut
	};
	const Case cases[] = {
		{thousand + tail(1000), 1000, 1000},
		{"x" + tail(1), 1, 1},
		{"12" + tail(7), 7, 7}, // as it says, though the file was never so long
		{thousand + tail(5000), 5000},
		{thousand + tail(1000).substr(2), 1000, 1000}, // the line break in front is not looked at
		{thousand + "\r\n------UE4CorvanePlugin_1000-- \t\r\n\n", 1000, 1000},
		{tail(0), 0},
		{tail(0).substr(2), 0}, // the shortest there can be
		{tail(5).substr(3), none},
		{thousand + tail(""), none},
		{thousand + tail("-"), none},
		{thousand + tail("-24"), none},
		{thousand + tail("+1000"), none},
		{thousand + tail("123456789012345678"), 123456789012345678},
		{thousand + tail("09223372036854775807"), 9223372036854775807},
		{thousand + tail("9223372036854775808"), none},
		{thousand + tail(1000) + "x", none},
		{thousand + "\r\n------ue4corvaneplugin_1000--\r\n", none},
		{thousand + "\r\n------UE4CorvanePlugin_1000-\r\n", none},
		{thousand + "\r\n------AnotherBoundary_1000--\r\n", none},
		{thousand, none},
		{std::string(1000, '-'), none},
		{"", none},
	};
	for (const Case& c : cases)
	{
		const std::string path = dir.write("a.bin", c.file);
		EXPECT_EQ(search(path), c.found) << c.file.substr(c.file.size() / 2);
		repairLeftover(path);
		EXPECT_EQ(dir.read("a.bin"), c.file.substr(0, static_cast<size_t>(c.after)));
	}
	EXPECT_TRUE(okay() == 5 && failed() == 0);
	for (const std::string& other : {dir.path("missing"), dir.path(), std::string()})
	{
		EXPECT_EQ(search(other), none) << other;
		repairLeftover(other);
	}
	EXPECT_EQ(okay() + failed(), 5);
	EXPECT_THAT(files(), ElementsAre("a.bin")) << "looking for a file must not make it";
}

TEST_F(UploadRepair, LeftoversOfLargeFilesAreCutAtTheRightPlace)
{
	const std::tuple<std::uintmax_t, std::string, bool> cases[] = {
		{2'147'483'647, tail(2147483647), true},
		{2'147'483'648, tail("-2147483648"), true},
		{3'000'000'000, tail("-1294967296"), true},
		{4'294'967'296, tail(0), true},
		{4'294'968'296, tail(1000), true},
		{5'000'000'000, tail(705032704), true},
		{5'000'000'000, "-" + tail(705032704), false}, // number and size disagree
		{2'999'999'999, tail("-1294967296"), false},
		{3'000'000'000, tail(1000), false},
	};
	for (const auto& [size, end, bFits] : cases)
	{
		const std::string path = sparse("large.bin", size, end);
		EXPECT_EQ(search(path), bFits ? static_cast<int64>(size) : none) << size;
		repairLeftover(path);
		EXPECT_EQ(fs::file_size(path), size + (bFits ? 0 : end.size())) << size;
	}
}

TEST_F(UploadRepair, CopiesThatWereLeftBehindAreTold)
{
	Lab::Gate gate;
	UploadSink slow(gate);
	const std::string path = dir.write("a.bin", thousand);
	const std::string copy = dir.write("a_UEUploadCopy_0123.bin", thousand + tail(1000));
	for (const char* other :
		{"a_UEUploadCopy_0123.txt", "ba_UEUploadCopy_0123.bin", "below/a_UEUploadCopy_0123.bin", "a_UEUploadCopy_.bin/x"})
	{
		dir.write(other, "");
	}
	execute(put(slow.url(), path, Type::PUT_STREAM_COPY)); // whose copy is in use
	const std::vector<std::string> before = files();
	EXPECT_EQ(search(path), none);
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy has been left behind: " + copy), 1);
	EXPECT_EQ(logged(ELogVerbosity::Display, "left behind"), 1);
	EXPECT_EQ(files(), before);
	gate.open();
	drain();
}
