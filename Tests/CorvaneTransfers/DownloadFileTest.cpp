#include "CorvaneDownloadFile.h"
#include "FileSizeLimit.h"
#include "ForwardingFiles.h"
#include "Host/Directories.h"
#include "LogCapture.h"
#include "LoopbackListener.h"
#include "RandomBytes.h"
#include "RunningTransfers.h"
#include "Threads/ByteBuffer.h"
#include "TransferFixture.h"
#include "UObject/UObjectGlobals.h"

#include <gmock/gmock.h>
#include <optional>

namespace
{
	namespace fs = std::filesystem;

	class DownloadFile : public TransferFixture
	{
	protected:
		static FCorvaneDownloadOptions patient()
		{
			FCorvaneDownloadOptions options;
			options.FirstWaitSeconds = 0.001;
			options.LongestWaitSeconds = 0.01;
			return options;
		}

		UCorvaneDownloadFile* start(
			const std::string& url, const FCorvaneDownloadOptions& options = patient(), std::string_view name = "file.bin")
		{
			return UCorvaneDownloadFile::Start(text(url), text(folder.path(name)), options, note());
		}
	};

	const std::string content = randomBytes(300'000);
} // namespace

TEST_F(DownloadFile, OfAServerThatChangesItsMindIsRightOrFailsWithItsReason)
{
	using Outcome = ECorvaneTransferOutcome;
	const std::string sameLength(content.rbegin(), content.rend());
	const std::string shrunk = sameLength.substr(0, 100'000), grown = sameLength + randomBytes(50'000);
	const Lab::FileOptions strong{.tellsTime = false}, unheeding{.tellsTime = false, .heedsIfRange = false};
	const Lab::FileOptions weak{.validator = Lab::Validator::Weak, .tellsTime = false};
	const Lab::FileOptions none{.validator = Lab::Validator::None, .tellsTime = false};
	const auto with = [](Lab::FileOptions options, Lab::Ranges ranges)
	{
		options.ranges = ranges;
		return options;
	};
	struct Case
	{
		const char* name;
		std::string bytes;
		Lab::FileOptions options;
		int restarts;
		Outcome outcome = Outcome::Succeeded;
	};
	const Case cases[] = {
		{"the same file", content, strong, 0},
		{"the same file by a weak tag", content, weak, 0},
		{"the same file without validators", content, none, 0},
		{"the same length, strong", sameLength, strong, 1},
		{"the same length, strong, If-Range ignored", sameLength, unheeding, 1},
		{"the same length, weak", sameLength, weak, 1},
		{"the same length, no validators", sameLength, none, 1},
		{"shrunk, strong", shrunk, unheeding, 1},
		{"shrunk, no validators", shrunk, none, 1},
		{"grown, strong", grown, unheeding, 1},
		{"grown, no validators", grown, none, 1},
		{"ranges ignored", content, with(strong, Lab::Ranges::Ignored), 1},
		{"another part", content, with(strong, Lab::Ranges::WrongStart), 1},
		{"another part in secret, no validators", content, with(none, Lab::Ranges::WrongBytes), 1},
		{"an error's page", content, strong, 0, Outcome::ServerError},
	};
	const Lab::Behaviour asItIs(std::vector<Lab::Behaviour>{}), page = Lab::status({.code = 404, .text = std::string(100'000, 'x')});
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		folder.write("file.bin", "old");
		Lab::FileOptions options = each.options;
		options.change = Lab::FileChange{Lab::bytesContent(each.bytes)};
		const bool isWeak = options.validator == Lab::Validator::Weak; // such a tag may stay though the file does not
		const bool isPage = each.outcome != Outcome::Succeeded;
		Lab::Origin server;
		server.at("/", Lab::file(content, options), isWeak ? Lab::headers({{"ETag", "W/\"one\""}}) : asItIs,
			Lab::inTurn({Lab::drop({.at = {.share = 0.5}}), isPage ? page : asItIs}));
		start(server.url());
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_EQ(report.Restarts, each.restarts);
		EXPECT_EQ(report.RestartReasons.Num(), each.restarts);
		const bool isThere = each.outcome == Outcome::Succeeded;
		EXPECT_TRUE(folder.read("file.bin") == (isThere ? each.bytes : "old"));
		EXPECT_EQ(folder.exists("file.bin.corvpart"), !isThere);
		std::filesystem::remove(folder.path("file.bin.corvpart"));
		std::filesystem::remove(folder.path("file.bin.corvjournal"));
	}
}

TEST_F(DownloadFile, GoesOnAfterAPauseAndInALaterStartWithoutAByteTwice)
{
	const std::string large = randomBytes(3'000'000);
	origin.at("/", Lab::file(large), Lab::onlyFirst(2, Lab::stall({.at = {.share = 0.5}})));
	UCorvaneDownloadFile* const first = start(origin.url());
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes == 1'500'000; }, patienceSeconds));
	first->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return first->IsPaused(); }, patienceSeconds));
	first->Continue();
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes == 2'250'000; }, patienceSeconds));
	first->Cancel();
	FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Cancelled);
	EXPECT_EQ(report.BytesLeft, 2'250'000);
	EXPECT_FALSE(folder.exists("file.bin"));
	Lab::Origin other; // which brings not one byte of the file, so that the rest stays
	start(other.url());
	EXPECT_EQ(finish().Outcome, ECorvaneTransferOutcome::ServerError);

	FCorvaneDownloadOptions options = patient();
	options.Hash = text("sha256");
	start(origin.url(), options);
	report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Succeeded) << utf8(report.Sentence);
	EXPECT_EQ(report.TakenOverBytes, 2'250'000);
	EXPECT_EQ(report.TransferredBytes, 750'000);
	EXPECT_EQ(report.Hash.Len(), 64);
	const std::vector<Lab::Exchange> log = origin.log();
	ASSERT_EQ(log.size(), 3u);
	EXPECT_EQ(log[1].request->header("Range"), "bytes=1500000-");
	EXPECT_EQ(log[2].request->header("Range"), "bytes=2250000-");
	EXPECT_TRUE(folder.read("file.bin") == large);
	expectNothingBeside();
}

TEST_F(DownloadFile, TakesNoByteBeyondWhatWasTold)
{
	origin.at("/", content,
		Lab::onlyFirst(1, std::vector{Lab::status({.code = 206}), Lab::headers({{"Content-Range", "bytes 0-99999/300000"}})}));
	start(origin.url());
	const FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Succeeded) << utf8(report.Sentence);
	ASSERT_EQ(report.RestartReasons.Num(), 1);
	EXPECT_THAT(utf8(report.RestartReasons[0]), testing::HasSubstr("more bytes than it had told"));
	EXPECT_TRUE(folder.read("file.bin") == content);
}

TEST_F(DownloadFile, KeepsItsPaceAlsoWhereNoPartsAreSent)
{
	origin.at("/", Lab::file(content, {.ranges = Lab::Ranges::Ignored}));
	FCorvaneDownloadOptions options = patient();
	options.BytesPerSecond = 1'000'000;
	start(origin.url(), options);
	const FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Succeeded) << utf8(report.Sentence);
	EXPECT_GE(report.SecondsWorked, 0.15) << "of 0.3";
}

TEST_F(DownloadFile, EndsWithOneReasonAndTouchesNothing)
{
	using Outcome = ECorvaneTransferOutcome;
	origin.at("*", content);
	const std::string dead = "http://" + LoopbackListener().authority() + "/";
	struct Case
	{
		const char* name;
		std::string url;
		std::function<void(FCorvaneDownloadOptions&)> change;
		Outcome outcome;
	};
	const Case cases[] = {
		{"no address", "file", {}, Outcome::Refused},
		{"another protocol", "ftp://host/file", {}, Outcome::Refused},
		{"a hash that is none", origin.url(), [](auto& o) { o.Hash = text("sha256:12"); }, Outcome::Refused},
		{"no attempt", origin.url(), [](auto& o) { o.Attempts = 0; }, Outcome::Refused},
		{"a negative size", origin.url(), [](auto& o) { o.ExpectedSize = -2; }, Outcome::Refused},
		{"a negative limit", origin.url(), [](auto& o) { o.BytesPerSecond = -1; }, Outcome::Refused},
		{"its own header", origin.url(), [](auto& o) { o.Headers.Add(text("range"), text("bytes=0-")); }, Outcome::Refused},
		{"a file that may not be replaced", origin.url(), [](auto& o) { o.IfTargetExists = ECorvaneIfTargetExists::Fail; },
			Outcome::Refused},
		{"nobody there", dead, [](auto& o) { o.Attempts = 2; }, Outcome::NoConnection},
		{"another size", origin.url(), [](auto& o) { o.ExpectedSize = 5; }, Outcome::WrongSize},
		{"another hash", origin.url(), [](auto& o) { o.Hash = text("md5:00112233445566778899aabbccddeeff"); }, Outcome::WrongHash},
		{"what is there is enough", origin.url(), [](auto& o) { o.IfTargetExists = ECorvaneIfTargetExists::Keep; }, Outcome::Succeeded},
	};
	folder.write("file.bin", "old");
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		FCorvaneDownloadOptions options = patient();
		if (each.change)
		{
			each.change(options);
		}
		start(each.url, options);
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_FALSE(report.Sentence.IsEmpty());
		EXPECT_EQ(folder.read("file.bin"), "old");
		expectNothingBeside();
	}
	HostDirectories::Set("", folder.path());
	FCorvaneDownloadOptions keep = patient();
	keep.IfTargetExists = ECorvaneIfTargetExists::Keep;
	UCorvaneDownloadFile::Start(text(origin.url()), TEXT("file.bin"), keep, note());
	EXPECT_TRUE(finish().bTargetKept) << "a relative path starts at the base directory";
	HostDirectories::Set("", "");
}

TEST_F(DownloadFile, HasItsTargetForItselfAndEndsInOrderWithTheProgram)
{
	origin.at("/", Lab::file(content), Lab::stall({.at = {.byte = 200'000}}));
	UCorvaneDownloadFile* const first = start(origin.url());
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes > 190'000; }, patienceSeconds));
	start(origin.url());
	ASSERT_TRUE(loop.WaitFor([this] { return !reports.empty(); }, patienceSeconds));
	EXPECT_EQ(reports.front().Outcome, ECorvaneTransferOutcome::Refused);

	start(origin.url(), patient(), "other.bin"); // whose file may be open by the end, and may not
	start("no address");
	loop.Shutdown();
	ASSERT_EQ(reports.size(), 4u);
	EXPECT_EQ(reports[1].Outcome, ECorvaneTransferOutcome::Ended);
	EXPECT_TRUE(folder.read("file.bin.corvpart") == content.substr(0, static_cast<size_t>(reports[1].BytesLeft)));
	EXPECT_GT(reports[1].BytesLeft, 190'000);
	EXPECT_EQ(reports[2].Outcome, ECorvaneTransferOutcome::Ended);
	if (reports[2].BytesLeft > 0)
	{
		EXPECT_TRUE(folder.read("other.bin.corvpart") == content.substr(0, static_cast<size_t>(reports[2].BytesLeft)));
	}
	else
	{
		expectNothingBeside("other.bin");
	}
	EXPECT_EQ(reports[3].Outcome, ECorvaneTransferOutcome::Refused);
}

TEST_F(DownloadFile, SaysWhatIsWrongWithTheDiskAndLeavesTheTarget)
{
	using Outcome = ECorvaneTransferOutcome;
	origin.at("/", content);
	origin.at("/huge", content, Lab::length({.says = 100'000'000'000'000}), Lab::stall({.at = {.byte = 300'000}}));
	const auto makeFolder = [this](const char* name)
	{
		fs::remove(folder.path(name));
		fs::create_directories(folder.path(name) + "/in it");
	};
	std::unique_ptr<IFileHandle> another;
	std::optional<FileSizeLimit> limit;
	struct Case
	{
		const char* name;
		const char* says;
		Outcome outcome;
		std::string url;
		std::function<void()> make;
	};
	const Case cases[] = {
		{"no room for the whole", "bytes left", Outcome::DiskFull, origin.url("/huge"), {}},
		{"a write that fails", "does not take", Outcome::CannotWrite, origin.url(), [&] { limit.emplace(100'000); }},
		{"a folder for the target", "is a folder", Outcome::CannotWrite, origin.url(), [&] { makeFolder("a/file.bin"); }},
		{"a folder for the part file", "is a folder", Outcome::CannotWrite, origin.url(), [&] { makeFolder("a/file.bin.corvpart"); }},
		{"a folder for the journal", "is a folder", Outcome::CannotWrite, origin.url(), [&] { makeFolder("a/file.bin.corvjournal"); }},
		{"a file for the folder", "cannot be made", Outcome::CannotWrite, origin.url(),
			[&]
			{
				fs::remove_all(folder.path("a"));
				folder.write("a", "");
			}},
		{"a folder in a folder that takes none", "cannot be made", Outcome::CannotWrite, origin.url(),
			[&]
			{
				fs::remove_all(folder.path("a"));
				fs::create_directory_symlink("/proc", folder.path("a"));
			}},
		{"another program", "in use", Outcome::Refused, origin.url(),
			[&]
			{
				folder.write("a/file.bin.corvjournal", "");
				another.reset(
					FPlatformFileManager::Get().GetPlatformFile().OpenWrite(*text(folder.path("a/file.bin.corvjournal")), true, true));
			}},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		folder.write("a/file.bin", "old");
		if (each.make)
		{
			each.make();
		}
		start(each.url, patient(), "a/file.bin");
		const FCorvaneTransferReport report = finish();
		limit.reset();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_THAT(utf8(report.Sentence), testing::HasSubstr(each.says));
		EXPECT_FALSE(fs::is_regular_file(folder.path("a/file.bin")) && folder.read("a/file.bin") != "old");
		another.reset();
		fs::remove_all(folder.path("a"));
	}
}

TEST_F(DownloadFile, FetchesAgainWhatTheDiskHasLost)
{
	struct LosingFiles final : ForwardingFiles
	{
		struct Handle final : ForwardingHandle
		{
			Handle(LosingFiles& inFiles, IFileHandle* lower)
				: ForwardingHandle(lower)
				, files(inFiles)
			{
			}
			bool Flush(const bool bFull) override { return --files.losses < 0 && Lower->Flush(bFull); }

			LosingFiles& files;
		};

		IFileHandle* OpenWrite(const TCHAR* name, bool bAppend, bool bAllowRead) override
		{
			IFileHandle* const handle = Lower.OpenWrite(name, bAppend, bAllowRead);
			return utf8(name).ends_with(".corvpart") ? new Handle(*this, handle) : handle;
		}

		std::atomic<int> losses{0};
	};
	LosingFiles files;
	const Lab::Behaviour file = Lab::file(content), stall = Lab::stall({.at = {.share = 0.5}});
	origin.at("/drop", file, Lab::onlyFirst(1, Lab::drop({.at = {.share = 0.5}}))).at("/whole", file);
	origin.at("/pause", file, Lab::onlyFirst(1, stall)).at("/cancel", file, stall);
	for (const auto& [path, outcome] :
		{std::pair("/drop", ECorvaneTransferOutcome::Succeeded), {"/pause", ECorvaneTransferOutcome::Succeeded},
			{"/cancel", ECorvaneTransferOutcome::Cancelled}, {"/whole", ECorvaneTransferOutcome::CannotWrite}})
	{
		SCOPED_TRACE(path);
		fs::remove(folder.path("file.bin"));
		files.losses = 1;
		UCorvaneDownloadFile* const transfer = start(origin.url(path));
		if (path == std::string_view("/pause") || outcome == ECorvaneTransferOutcome::Cancelled)
		{
			ASSERT_TRUE(loop.WaitFor([&] { return transfer->GetReport().TransferredBytes >= 150'000; }, patienceSeconds));
			transfer->Pause();
			ASSERT_TRUE(loop.WaitFor([&] { return transfer->IsPaused(); }, patienceSeconds));
			outcome == ECorvaneTransferOutcome::Cancelled ? transfer->Cancel() : transfer->Continue();
		}
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, outcome) << utf8(report.Sentence);
		EXPECT_LT(files.losses, 1);
		EXPECT_EQ(report.BytesLeft, 0);
		EXPECT_TRUE(!folder.exists("file.bin") || folder.read("file.bin") == content);
		expectNothingBeside();
	}
}

TEST_F(DownloadFile, TellsNoSecretsInItsReportAndOneLineOfTheLog)
{
	origin.at("*", content);
	LogCapture log;
	start("http://someone:hush@" + origin.authority() + "/file?token=hidden");
	const FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Succeeded);
	EXPECT_FALSE(origin.log().front().request->header("Authorization").empty());
	std::string told = utf8(report.AskedAddress + report.ReachedAddress + report.Sentence);
	int lines = 0;
	for (const LogCapture::Line& line : log.lines())
	{
		lines += line.text.starts_with("Transfer: ") ? 1 : 0;
		told += line.text;
		EXPECT_EQ(line.text.find("hidden"), std::string::npos) << line.text;
	}
	EXPECT_EQ(lines, 1);
	EXPECT_EQ(told.find("hush"), std::string::npos) << told;
	EXPECT_EQ(told.find("someone"), std::string::npos) << told;
}

TEST_F(DownloadFile, HoldsNobodyUpWhenTheDiskDoesNotAnswerAtTheEnd)
{
	struct StuckFiles final : ForwardingFiles
	{
		struct Handle final : ForwardingHandle
		{
			Handle(StuckFiles& inFiles, IFileHandle* lower)
				: ForwardingHandle(lower)
				, files(inFiles)
			{
			}
			bool Write(const uint8* bytes, int64 number) override
			{
				files.answers.wait(false);
				return Lower->Write(bytes, number);
			}

			StuckFiles& files;
		};

		IFileHandle* OpenWrite(const TCHAR* name, bool bAppend, bool bAllowRead) override
		{
			IFileHandle* const handle = Lower.OpenWrite(name, bAppend, bAllowRead);
			return utf8(name).ends_with("stuck.bin.corvpart") ? new Handle(*this, handle) : handle;
		}

		std::atomic<bool> answers{false};
	};
	StuckFiles files;
	const std::string large = randomBytes(3 * FCorvaneByteBuffer::Limit);
	origin.at("/", content).at("/large", large);
	UCorvaneDownloadFile* const stuck = start(origin.url("/large"), patient(), "stuck.bin");
	ASSERT_TRUE(loop.WaitFor([&] { return stuck->GetReport().TransferredBytes >= FCorvaneByteBuffer::Limit; }, patienceSeconds));
	CorvaneRunningTransfers::EndAll(0.01);
	EXPECT_TRUE(reports.empty());
	start(origin.url());
	ASSERT_TRUE(loop.WaitFor([this] { return reports.size() == 1; }, patienceSeconds)); // by the same HTTP thread
	EXPECT_EQ(reports.back().Outcome, ECorvaneTransferOutcome::Succeeded);
	files.answers = true;
	files.answers.notify_all();
	EXPECT_EQ(finish().Outcome, ECorvaneTransferOutcome::Ended);
	EXPECT_FALSE(folder.exists("stuck.bin"));
}
