#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "GameLoop.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "Upload/Form.h"
#include "Waiting.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Outcome = ECorvaneTransferOutcome;

namespace
{
	using testing::HasSubstr;

	class Upload : public ::testing::Test
	{
	protected:
		/** Those under which the tests run once more; see CMakeLists.txt. */
		static FGameLoopSettings conditions()
		{
			FGameLoopSettings settings;
			settings.bCollectAfterEveryTick = std::getenv("CORVANE_TEST_COLLECT") != nullptr;
			settings.http.bForceGameThreadCallbacks = std::getenv("CORVANE_TEST_GAME_THREAD") != nullptr;
			return settings;
		}

		static FCorvaneUploadOptions patient(const char* verb = "")
		{
			FCorvaneUploadOptions options;
			options.Verb = text(verb);
			options.FirstWaitSeconds = 0.001;
			options.LongestWaitSeconds = 0.01;
			return options;
		}

		UCorvaneUploadFile* put(const std::string& path, const std::string& file, const FCorvaneUploadOptions& options = patient())
		{
			return UCorvaneUploadFile::Start(text(origin.url(path)), text(file), options, note(), onMove);
		}
		UCorvaneUploadForm* form(const std::string& path, const TArray<FCorvaneFormFile>& files, const TArray<FCorvaneFormField>& fields,
			const FCorvaneUploadOptions& options = patient())
		{
			return UCorvaneUploadForm::Start(text(origin.url(path)), files, fields, options, note(), onMove);
		}

		UCorvaneUpload::FTell note()
		{
			++expected;
			return [this](const FCorvaneTransferReport& report) { reports.push_back(report); };
		}

		FCorvaneTransferReport finish()
		{
			EXPECT_LT(reports.size(), expected) << "it ended inside its start";
			EXPECT_TRUE(loop.WaitFor([this] { return reports.size() >= expected; }, patienceSeconds));
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(reports.size(), expected); // each start has one outcome
			return reports.empty() ? FCorvaneTransferReport() : reports.back();
		}

		/** Requests for a place that came so far. */
		size_t requestsFor(std::string_view path) const
		{
			const std::vector<Lab::Exchange> log = origin.log();
			return static_cast<size_t>(
				std::count_if(log.begin(), log.end(), [&](const Lab::Exchange& each) { return each.request->path() == path; }));
		}

		TempDir folder{quickPlace()};
		Lab::Origin origin;
		FGameLoop loop{conditions()};
		UCorvaneUpload::FTell onMove;
		size_t expected = 0;
		std::vector<FCorvaneTransferReport> reports;
	};

	FCorvaneFormFile fileOf(const char* field, const std::string& path, const char* name = "", const char* type = "")
	{
		return {text(field), text(path), text(name), text(type)};
	}
	FCorvaneFormField fieldOf(const char* name, const std::string& value)
	{
		return {text(name), text(value)};
	}
} // namespace

TEST(Form, ChoosesABoundaryThatOccursInNoNameAndNoValue)
{
	std::vector<std::string> made = {"one", "two", "three", "four", "five"};
	const FString boundary = CorvaneForm::ChooseBoundary({fileOf("--one", "p", "a-two-b", "x/three")}, {fieldOf("f", "four")},
		[&made]
		{
			const std::string next = made.front();
			made.erase(made.begin());
			return text(next);
		});
	EXPECT_EQ(utf8(boundary), "five");
}

TEST_F(Upload, FormsArriveAsTheyWereGivenAndTouchNoFile)
{
	origin.at("POST /form", Lab::form());
	const std::string bytes = randomBytes(300'000);
	const std::string path = folder.write("größe.png", bytes);
	const std::string empty = folder.write("empty", "");
	const auto time = std::filesystem::last_write_time(path);
	FCorvaneUploadOptions options = patient();
	options.Hash = TEXT("md5");
	form("/form", {fileOf("a", path), fileOf("a", path, "say \"hi\"\r\n.bin", "text/x-own"), fileOf("none", empty)},
		{fieldOf("first", "ä\nö\r\n"), fieldOf("twice", "1"), fieldOf("twice", ""), fieldOf("q\"uo\nte", "--corvane-form-")}, options);
	const FCorvaneTransferReport report = finish();
	ASSERT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
	EXPECT_EQ(report.Code, 200);
	EXPECT_EQ(report.TransferredBytes, report.TotalBytes);
	EXPECT_EQ(origin.log().back().request->bodyBytes, uint64_t(report.TotalBytes));
	EXPECT_EQ(origin.log().back().request->announced, uint64_t(report.TotalBytes));

	const nlohmann::json parts = nlohmann::json::parse(utf8(report.Answer));
	const auto field = [](const char* name, const char* value) { return nlohmann::json{{"name", name}, {"value", value}}; };
	ASSERT_EQ(parts.size(), 7u);
	EXPECT_EQ(parts[0], field("first", "ä\nö\r\n"));
	EXPECT_EQ(parts[1], field("twice", "1"));
	EXPECT_EQ(parts[2], field("twice", ""));
	EXPECT_EQ(parts[3], field("q%22uo%0D%0Ate", "--corvane-form-"));
	EXPECT_EQ(parts[4]["fileName"], "größe.png");
	EXPECT_EQ(parts[4]["type"], "image/png");
	EXPECT_EQ(parts[4]["bytes"], bytes.size());
	EXPECT_EQ(parts[5]["fileName"], "say %22hi%22%0D%0A.bin");
	EXPECT_EQ(parts[5]["type"], "text/x-own");
	EXPECT_EQ(parts[5]["md5"], parts[4]["md5"]);
	EXPECT_EQ(parts[6]["type"], "application/octet-stream");
	EXPECT_EQ(report.Hash.Len(), 32);
	EXPECT_EQ(folder.read("größe.png"), bytes);
	EXPECT_EQ(std::filesystem::last_write_time(path), time);
}

TEST_F(Upload, FilesArriveWithTheirTypeAndHashAndTellTheirProgress)
{
	origin.at("/file", Lab::upload({.bytesPerSecond = 60e6}));
	const std::string path = folder.write("movie.mp4", randomBytes(20'000'000));
	std::vector<int64> moves;
	onMove = [&moves](const FCorvaneTransferReport& report) { moves.push_back(report.TransferredBytes); };
	for (const char* verb : {"", "post"})
	{
		moves.clear();
		FCorvaneUploadOptions options = patient(verb);
		options.Hash = TEXT("MD5");
		options.Headers.Add(TEXT("X-Own"), TEXT("kept"));
		options.AnswerLimit = 3;
		put("/file", path, options);
		const FCorvaneTransferReport report = finish();
		ASSERT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
		EXPECT_EQ(utf8(report.Answer), "200") << "as much of 20000000 as was wanted";
		const Lab::Request& request = *origin.log().back().request;
		EXPECT_EQ(request.method, *verb ? "POST" : "PUT");
		EXPECT_EQ(request.header("Content-Type"), "video/mp4");
		EXPECT_EQ(request.header("X-Own"), "kept");
		EXPECT_EQ(utf8(report.Hash), request.bodyMd5);
		EXPECT_TRUE(std::is_sorted(moves.begin(), moves.end()));
		EXPECT_GE(moves.size(), 2u);
		EXPECT_LT(moves.front(), 20'000'000);
		EXPECT_EQ(report.TransferredBytes, 20'000'000);
	}
}

TEST_F(Upload, EndsWithOneReasonAndSendsNothingTwiceThatMustNotBe)
{
	const std::string path = folder.write("large", randomBytes(3'000'000));
	origin.at("/page", Lab::upload({.refusesAfter = 0, .code = 200})); // the length of the body is announced to it, too
	struct Case
	{
		const char* what;
		Lab::Behaviour fault; // of the first request
		Outcome post;
		int32 code; // of that
		const char* answer;
		Outcome repeated; // of what may be sent again
		size_t requests;
	};
	const Case cases[] = {
		{"refuses early", Lab::upload({.refusesAfter = 0, .code = 401}), Outcome::ServerError, 401, "0", Outcome::ServerError, 1},
		{"refuses in the middle", Lab::upload({.refusesAfter = 1'000'000, .code = 413}), Outcome::ServerError, 413, "", // some bytes
			Outcome::ServerError, 1},
		{"refuses late", Lab::status({.code = 403, .text = "no"}), Outcome::ServerError, 403, "no", Outcome::ServerError, 1},
		{"hangs up", Lab::upload({.hangsUpAfter = 1'000'000}), Outcome::Dropped, 0, "", Outcome::Succeeded, 2},
		{"hangs up late", Lab::drop(), Outcome::Dropped, 0, "", Outcome::Succeeded, 2},
		{"says nothing", Lab::stall(), Outcome::Stalled, 0, "", Outcome::Succeeded, 2},
		{"takes it", Lab::text("well"), Outcome::Succeeded, 200, "well", Outcome::Succeeded, 1},
		{"is busy", Lab::status({.code = 503, .retryAfter = "0", .text = "later"}), Outcome::ServerError, 503, "later", Outcome::Succeeded,
			2},
		{"is elsewhere", Lab::redirect({.to = "/page", .code = 307}), Outcome::ServerError, 307, "", Outcome::ServerError, 1},
		{"answers with a page", Lab::redirect({.to = "/page", .code = 303}), Outcome::Succeeded, 200, "0", Outcome::Succeeded, 1},
	};
	int number = 0;
	for (const Case& each : cases)
	{
		for (const bool mayBeRepeated : {false, true})
		{
			SCOPED_TRACE(testing::Message() << each.what << (mayBeRepeated ? ", again" : ", once"));
			const std::string place = "/" + std::to_string(number++);
			origin.at(place, Lab::inTurn({each.fault, Lab::upload()}));
			FCorvaneUploadOptions options = patient(number % 4 == 0 ? "PUT" : "POST");
			options.SilenceSeconds = 0.5;
			options.bMayBeRepeated = mayBeRepeated;
			put(place, path, options);
			const FCorvaneTransferReport report = finish();
			EXPECT_EQ(report.Outcome, mayBeRepeated ? each.repeated : each.post) << utf8(report.Sentence);
			EXPECT_EQ(requestsFor(place), mayBeRepeated ? each.requests : 1u);
			EXPECT_EQ(report.Attempts, static_cast<int32>(mayBeRepeated ? each.requests : 1u));
			if (!mayBeRepeated)
			{
				EXPECT_EQ(report.Code, each.code);
				EXPECT_THAT(utf8(report.Answer), HasSubstr(each.answer));
			}
		}
	}
}

TEST_F(Upload, RefusesWhatItCannotSendAndAsksNobody)
{
	const std::string path = folder.write("file", "x");
	const auto with = [](auto change)
	{
		FCorvaneUploadOptions options = patient();
		change(options);
		return options;
	};
	using O = FCorvaneUploadOptions;
	const FCorvaneUploadOptions wrong[] = {with([](O& o) { o.Verb = TEXT("PATCH"); }), with([](O& o) { o.Attempts = 0; }),
		with([](O& o) { o.SilenceSeconds = 0; }), with([](O& o) { o.LongestWaitSeconds = -1; }), with([](O& o) { o.Hash = TEXT("crc"); }),
		with([](O& o) { o.AnswerLimit = -1; }), with([](O& o) { o.Headers.Add(TEXT("content-length"), TEXT("1")); }),
		with([](O& o) { o.Headers.Add(TEXT("X-Key"), TEXT("secret\r\nX: y")); })};
	for (const FCorvaneUploadOptions& options : wrong)
	{
		put("/file", path, options);
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, Outcome::Refused);
		EXPECT_THAT(utf8(report.Sentence), testing::Not(HasSubstr("secret")));
	}
	const std::vector<std::pair<TArray<FCorvaneFormFile>, TArray<FCorvaneFormField>>> wrongForms = {
		{{}, {}}, {{fileOf("", path)}, {}}, {{fileOf("f", "")}, {}}, {{fileOf("f", path, "n", "a\r\nb")}, {}}, {{}, {fieldOf("", "v")}}};
	for (const auto& [files, fields] : wrongForms)
	{
		form("/file", files, fields);
		EXPECT_EQ(finish().Outcome, Outcome::Refused);
	}
	form("/file", {}, {fieldOf("f", "v")}, with([](O& o) { o.Headers.Add(TEXT("Content-Type"), TEXT("text/plain")); }));
	EXPECT_EQ(finish().Outcome, Outcome::Refused);
	put("/file", "");
	EXPECT_EQ(finish().Outcome, Outcome::Refused);
	put("/file", folder.path("missing"));
	EXPECT_EQ(finish().Outcome, Outcome::CannotRead);
	std::filesystem::resize_file(path, std::uintmax_t(1) << 31);
	put("/file", path);
	FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, Outcome::Refused);
	EXPECT_THAT(utf8(report.Sentence), HasSubstr("resumable"));
	EXPECT_TRUE(origin.log().empty());
	put("/file", folder.write("file", "x"), with([](O& o) { o.Hash = text("md5:" + std::string(32, '0')); }));
	report = finish();
	EXPECT_EQ(report.Outcome, Outcome::WrongHash) << utf8(report.Sentence);
}

TEST_F(Upload, OfAFileThatChangesMeanwhileIsNeverASuccess)
{
	origin.at("/file", Lab::upload({.bytesPerSecond = 60e6}));
	const std::string path = folder.write("file", randomBytes(20'000'000));
	UCorvaneUploadFile* const running = put("/file", path);
	ASSERT_TRUE(loop.WaitFor([&] { return running->GetReport().TransferredBytes > 0; }, patienceSeconds));
	std::ofstream(path, std::ios::binary | std::ios::app) << "more";
	const FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, Outcome::CannotRead);
	EXPECT_THAT(utf8(report.Sentence), HasSubstr("changed while it was sent"));
	EXPECT_LT(report.TransferredBytes, 20'000'000);
}

TEST_F(Upload, PausesBetweenTriesAndEndsWhenItIsCancelled)
{
	Lab::Gate gate;
	origin.at("/file", Lab::inTurn({Lab::status({.code = 500}), Lab::hold(gate)}));
	const std::string path = folder.write("file", "x");
	UCorvaneUploadFile* const running = put("/file", path);
	running->Pause(); // before the first try
	ASSERT_TRUE(loop.WaitFor([&] { return running->IsPaused(); }, patienceSeconds));
	running->Continue();
	running->Pause(); // while it is sent
	ASSERT_TRUE(loop.WaitFor([&] { return running->IsPaused(); }, patienceSeconds));
	EXPECT_EQ(requestsFor("/file"), 1u);
	running->Continue();
	ASSERT_TRUE(loop.WaitFor([&] { return requestsFor("/file") == 2; }, patienceSeconds));
	running->Cancel();
	EXPECT_EQ(finish().Outcome, Outcome::Cancelled);
	EXPECT_TRUE(reports.back().Restarts == 1 && requestsFor("/file") == 2);
}

TEST_F(Upload, EndsWithTheProgram)
{
	origin.at("/file", Lab::stall());
	put("/file", folder.write("file", "x"));
	ASSERT_TRUE(loop.WaitFor([&] { return requestsFor("/file") == 1; }, patienceSeconds));
	loop.Shutdown();
	ASSERT_EQ(reports.size(), 1u);
	EXPECT_EQ(reports[0].Outcome, Outcome::Ended);
}
