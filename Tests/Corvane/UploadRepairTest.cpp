#include "Host/SystemThreads.h"
#include "NoThreads.h"
#include "UploadFixture.h"
#include "Uploads/ChangedFiles.h"

#include <fstream>

using testing::ElementsAre;

namespace
{
	namespace fs = std::filesystem;

	constexpr int64 untouched = -77;

	class UploadRepair : public UploadTest
	{
	protected:
		static FhttpRequest record(EHTTPCorvRequestType type, const std::string& path, int64 size)
		{
			FhttpRequest made;
			made.requestType = type;
			made.filePath = text(path);
			made.originalFileSize = size;
			return made;
		}

		/** Hands a record over as a completion does, and waits for the repair. */
		void repair(FhttpRequest made)
		{
			library().addRequestToTruncateThread(made);
			drain();
			EXPECT_FALSE(library().isFileBlocked(made.filePath)) << "whatever the record holds";
		}

		/** @return the size found, or what the output held before. */
		static int64 search(const std::string& path)
		{
			bool found = false;
			int64 size = untouched;
			UCorvaneBPLibrary::searchUploadLeftovers(EHTTPCorvFileUpload::E_ad, text(path), found, size);
			EXPECT_EQ(found, size != untouched);
			return size;
		}

		static bool repairLeftover(const std::string& path)
		{
			return UCorvaneBPLibrary::repairFileAfterUpload(EHTTPCorvFileUpload::E_ad, text(path));
		}

		int okay() const { return logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate okay: "); }
		int failed() const { return logged(ELogVerbosity::Display, "UCorvaneBPLibrary: truncate fail: "); }
	};

	constexpr auto multipart = EHTTPCorvRequestType::PUT_STREAM_MP;
	constexpr auto copied = EHTTPCorvRequestType::PUT_STREAM_COPY;
	const std::string thousand(1000, 'x');
} // namespace

TEST_F(UploadRepair, CutsAFileThatIsExactlyAsTheUploadLeftIt)
{
	struct Case
	{
		std::string file;
		int64 size;
		bool cut;
	};
	const Case cases[] = {
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
	int numCut = 0;
	int numLeft = 0;
	for (const Case& c : cases)
	{
		const std::string path = dir.write("a.bin", c.file);
		repair(record(multipart, path, c.size));
		EXPECT_EQ(dir.read("a.bin"), c.cut ? c.file.substr(0, static_cast<size_t>(c.size)) : c.file);
		(c.cut ? numCut : numLeft) += 1;
		EXPECT_EQ(okay(), numCut);
		EXPECT_EQ(failed(), numLeft);
	}
}

TEST_F(UploadRepair, LeavesAloneWhatNoUploadChanged)
{
	const std::string file = thousand + tail(1000);
	const std::string path = dir.write("a.bin", file);
	for (const FhttpRequest& made : {record(multipart, path, 0), record(multipart, "", 1000), record(multipart, dir.path("missing"), 1000),
			 record(multipart, dir.path(), 1000), record(EHTTPCorvRequestType::GET, path, 1000),
			 record(EHTTPCorvRequestType::PUT_STREAM_BLANK, path, 1000), record(copied, path, 1000)})
	{
		repair(made);
		EXPECT_EQ(dir.read("a.bin"), file) << "a record of a copy that names the source must not delete it";
	}
	EXPECT_EQ(okay() + failed(), 0);
	EXPECT_THAT(files(), ElementsAre("a.bin"));
}

TEST_F(UploadRepair, DeletesCopies)
{
	const std::string path = dir.write("a_UEUploadCopy_0123.bin", "x");
	repair(record(copied, path, 1));
	EXPECT_TRUE(files().empty());
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy has been deleted: " + path), 1);
	repair(record(copied, path, 1));
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy could not be deleted: " + path), 1);
}

TEST_F(UploadRepair, AFileIsBlockedUntilAllItsRecordsAreHandled)
{
	library().setUploadGracePeriod(3600);
	const std::string path = dir.write("a.bin", thousand + tail(1000));
	EXPECT_FALSE(library().isFileBlocked(text(path))) << "nothing was ever uploaded";
	FhttpRequest made = record(multipart, path, 1000);
	library().addRequestToTruncateThread(made);
	library().addRequestToTruncateThread(made);
	FCorvChangedFiles& changed = library().changedFileList();
	EXPECT_TRUE(library().isFileBlocked(text(path)));
	changed.endRepair(text(path));
	EXPECT_TRUE(library().isFileBlocked(text(path))) << "a second record waits";
	changed.endRepair(text(path));
	EXPECT_FALSE(library().isFileBlocked(text(path)));
	loop.Shutdown();
	EXPECT_EQ(okay(), 1);
	EXPECT_EQ(failed(), 1);
	EXPECT_EQ(dir.read("a.bin"), thousand);
}

TEST_F(UploadRepair, IsDoneAtOnceWhenTheSystemHasNoThreadToGive)
{
	library().setUploadGracePeriod(3600);
	HostThreads::JoinIdle();
	const NoThreads limit;
	for (FhttpRequest made :
		{record(multipart, dir.write("a.bin", thousand + tail(1000)), 1000), record(copied, dir.write("a_UEUploadCopy_0123.bin", "x"), 1)})
	{
		library().addRequestToTruncateThread(made);
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
		FhttpRequest made = record(multipart, dir.write(std::to_string(number), "x" + tail(1)), 1);
		library().addRequestToTruncateThread(made);
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
	FhttpRequest made = record(multipart, dir.write("a.bin", "x" + tail(1)), 1);
	library().addRequestToTruncateThread(made);
	EXPECT_FALSE(fresh.WaitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); }, 0.1));
	EXPECT_EQ(dir.read("a.bin"), "x" + tail(1));
	fresh.Shutdown();
	EXPECT_EQ(dir.read("a.bin"), "x") << "the end of the program does not wait";
}

TEST_F(UploadRepair, AFileWrittenDuringTheGracePeriodStaysAsItWasWritten)
{
	library().setUploadGracePeriod(3600);
	UploadSink sink;
	const std::string path = dir.write("save.dat", thousand);
	execute(put(sink.url(), path, Type::PUT_STREAM_MP));
	ASSERT_TRUE(waitForCompletions());
	EXPECT_EQ(dir.read("save.dat"), thousand + tail(1000));
	dir.write("save.dat", std::string(5000, 'n'));
	loop.Shutdown();
	EXPECT_EQ(dir.read("save.dat"), std::string(5000, 'n'));
	EXPECT_EQ(failed(), 1);
}

TEST_F(UploadRepair, ARecordIsUploadedAgainAfterTheRepair)
{
	UploadSink sink;
	const TArray<FhttpRequest> requests = put(sink.url(), dir.write("a.bin", thousand), Type::PUT_STREAM_MP);
	for (int round = 0; round < 3; ++round)
	{
		EXPECT_EQ(run(requests).statusCode, 200);
	}
	dir.write("a.bin", "");
	EXPECT_EQ(run(requests).statusCode, 200) << "an empty file is sent from memory";
	EXPECT_EQ(dir.read("a.bin"), "");
	EXPECT_EQ(okay(), 3);
	EXPECT_EQ(failed(), 0);
}

TEST_F(UploadRepair, TheEndOfTheProgramRepairsWhatIsQueuedAndWhatRuns)
{
	library().setUploadGracePeriod(3600);
	Gate never;
	UploadSink silent(&never);
	UploadSink sink;
	execute(put(sink.url(), dir.write("done.bin", thousand), Type::PUT_STREAM_MP));
	execute(put(sink.url(), dir.write("copied.bin", thousand), Type::PUT_STREAM_COPY));
	ASSERT_TRUE(waitForCompletions(2));
	execute(put(silent.url(), dir.write("running.bin", thousand), Type::PUT_STREAM_MP));
	execute(put(silent.url(), dir.write("copying.bin", thousand), Type::PUT_STREAM_COPY));
	// Stands for an upload whose completion never comes.
	library().changedFileList().begin(record(multipart, dir.write("stuck.bin", thousand + tail(1000)), 1000));
	EXPECT_EQ(dir.read("done.bin"), thousand + tail(1000));
	loop.Shutdown();
	EXPECT_THAT(files(), ElementsAre("copied.bin", "copying.bin", "done.bin", "running.bin", "stuck.bin"));
	for (const std::string& name : files())
	{
		EXPECT_EQ(dir.read(name), thousand) << name;
	}
}

TEST_F(UploadRepair, LeftoversAreFoundAndCutOff)
{
	const std::string path = dir.write("a.bin", thousand + tail(1000));
	EXPECT_EQ(search(path), 1000);
	EXPECT_FALSE(repairLeftover(path)) << "also when it has succeeded";
	EXPECT_EQ(dir.read("a.bin"), thousand);
	EXPECT_EQ(okay(), 1);
	EXPECT_EQ(search(path), untouched);

	for (const std::string& other : {dir.path("missing"), dir.path(), std::string()})
	{
		EXPECT_EQ(search(other), untouched) << other;
		EXPECT_FALSE(repairLeftover(other));
	}
	EXPECT_EQ(okay() + failed(), 1);
	EXPECT_THAT(files(), ElementsAre("a.bin")) << "looking for a file must not make it";
}

TEST_F(UploadRepair, CopiesThatWereLeftBehindAreTold)
{
	Gate gate;
	UploadSink slow(&gate);
	const std::string path = dir.write("a.bin", thousand);
	const std::string copy = dir.write("a_UEUploadCopy_0123.bin", thousand + tail(1000));
	for (const char* other :
		{"a_UEUploadCopy_0123.txt", "ba_UEUploadCopy_0123.bin", "below/a_UEUploadCopy_0123.bin", "a_UEUploadCopy_.bin/x"})
	{
		dir.write(other, "");
	}
	execute(put(slow.url(), path, Type::PUT_STREAM_COPY)); // whose copy is in use
	const size_t before = files().size();
	EXPECT_EQ(search(path), untouched);
	EXPECT_EQ(logged(ELogVerbosity::Display, "UCorvaneBPLibrary: upload copy has been left behind: " + copy), 1);
	EXPECT_EQ(logged(ELogVerbosity::Display, "left behind"), 1);
	EXPECT_EQ(files().size(), before);
	gate.open();
	drain();
}

TEST_F(UploadRepair, LeftoversThatDoNotFitAreLeftAlone)
{
	for (const std::string& file : {thousand + tail(5000), tail(0), std::string("short"), thousand + "\r\n------UE4CorvanePlugin_x--\r\n"})
	{
		const std::string path = dir.write("a.bin", file);
		EXPECT_FALSE(repairLeftover(path));
		EXPECT_EQ(dir.read("a.bin"), file);
	}
	EXPECT_EQ(search(dir.write("a.bin", thousand + tail(5000))), 5000) << "found it is";
	EXPECT_EQ(okay() + failed(), 0);
}

TEST_F(UploadRepair, LeftoversOfLargeFilesAreCutAtTheRightPlace)
{
	struct Case
	{
		std::uintmax_t size;
		const char* number;
	};
	for (const Case& c : {Case{3'000'000'000, "-1294967296"}, {4'294'967'296, "0"}, {4'294'968'296, "1000"}, {5'000'000'000, "705032704"}})
	{
		const std::string path = dir.write("large.bin", "");
		fs::resize_file(path, c.size); // takes no room on disk
		std::ofstream(path, std::ios::binary | std::ios::app) << "\r\n------UE4CorvanePlugin_" << c.number << "--\r\n";
		EXPECT_EQ(search(path), static_cast<int64>(c.size));
		repairLeftover(path);
		EXPECT_EQ(fs::file_size(path), c.size);
		std::ofstream(path, std::ios::binary | std::ios::app) << "-\r\n------UE4CorvanePlugin_" << c.number << "--\r\n";
		EXPECT_EQ(search(path), untouched) << "number and size disagree";
		repairLeftover(path);
		EXPECT_GT(fs::file_size(path), c.size);
	}
}
