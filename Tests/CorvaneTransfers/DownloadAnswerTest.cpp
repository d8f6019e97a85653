#include "Download/DownloadAnswer.h"
#include "Download/DownloadMachine.h"
#include "Download/DownloadOptions.h"
#include "TextSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using Verdict = ECorvaneDownloadVerdict;
using Outcome = ECorvaneTransferOutcome;

namespace
{
	constexpr const char* changed = "Sun, 06 Nov 1994 08:49:37 GMT";

	/** What was asked: 100 bytes are on disk of a file of 300, unless a case says something else. */
	FCorvaneDownloadQuestion rest(const FCorvaneVersion& version)
	{
		FCorvaneDownloadQuestion question;
		question.OnDisk = 100;
		question.bRange = true;
		question.Total = 300;
		question.Version = version;
		question.Compare = version.ForIfRange().IsEmpty() ? 100 : 0;
		return question;
	}

	const FCorvaneVersion strong{TEXT("\"a\""), TEXT(""), false};
	const FCorvaneVersion dated{TEXT(""), text(changed), true};
	const FCorvaneVersion weak{TEXT("W/\"a\""), TEXT(""), false};
	const FCorvaneVersion none;

	FCorvaneAnswer judgedAnswer(int code, const std::string& range, const FCorvaneVersion& version, int64 length = -1)
	{
		FCorvaneAnswer made;
		made.Code = code;
		made.Range = CorvaneAnswer::ParseRange(text(range));
		made.Version = version;
		made.ContentLength = length;
		return made;
	}

	Verdict judge(const FCorvaneDownloadQuestion& question, const FCorvaneAnswer& answer)
	{
		return CorvaneDownload::JudgeAnswer(question, answer).Verdict;
	}
} // namespace

TEST(DownloadAnswer, GoesBehindWhatIsOnDiskOnlyIfItFits)
{
	struct Row
	{
		int code;
		const char* range;
		FCorvaneVersion other; // than the one on disk
		Verdict withStrong, withDate, withWeak, withNone;
	};
	const FCorvaneVersion otherTag{TEXT("\"b\""), TEXT(""), false};
	const FCorvaneVersion otherDate{TEXT(""), TEXT("Mon, 07 Nov 1994 08:49:37 GMT"), true};
	constexpr Verdict append = Verdict::Append, compare = Verdict::CompareThenAppend, whole = Verdict::StartOverWithThis,
					  again = Verdict::StartOverAgain, waits = Verdict::WaitAndGoOn, fails = Verdict::Fail, there = Verdict::AllThere;
	const Row rows[] = {
		{206, "bytes {}-299/300", {}, append, append, compare, compare},
		{206, "bytes {}-199/*", {}, append, append, compare, compare}, // less than asked for
		{206, "bytes {}-299/300", otherTag, again, append, again, compare},
		{206, "bytes {}-299/300", otherDate, append, again, compare, compare},
		{206, "bytes {}-300/301", {}, again, again, again, again},
		{206, "bytes {}-250/251", {}, again, again, again, again},
		{206, "bytes {}-300/*", {}, again, again, again, again},
		{206, "bytes 50-299/300", {}, again, again, again, again},
		{206, "bytes 101-299/300", {}, again, again, again, again},
		{206, "", {}, again, again, again, again}, // such as multipart/byteranges
		{200, "", {}, whole, whole, whole, whole},
		{203, "", otherTag, whole, whole, whole, whole},
		{416, "bytes */100", {}, again, again, again, again}, // 300 were told before
		{416, "", {}, again, again, again, again},
		{412, "", {}, again, again, again, again},
		{304, "", {}, fails, fails, fails, fails},
	};
	for (const Row& row : rows)
	{
		for (const auto& [version, expected] :
			{std::pair(strong, row.withStrong), {dated, row.withDate}, {weak, row.withWeak}, {none, row.withNone}})
		{
			const FCorvaneDownloadQuestion question = rest(version);
			std::string range = row.range;
			if (const size_t hole = range.find("{}"); hole != range.npos)
			{
				range.replace(hole, 2, std::to_string(question.From()));
			}
			const bool speaks = !row.other.ETag.IsEmpty() || !row.other.LastModified.IsEmpty();
			EXPECT_EQ(judge(question, judgedAnswer(row.code, range, speaks ? row.other : version)), expected)
				<< row.code << ' ' << range << " of " << utf8(version.ETag) << utf8(version.LastModified);
		}
	}
	for (const int code : {408, 425, 429, 500, 502, 503, 504, 520})
	{
		EXPECT_EQ(judge(rest(strong), judgedAnswer(code, "", none)), waits) << code;
	}
	for (const int code : {400, 401, 403, 404, 410, 451, 501, 505, 511, 201, 204, 300, 302, 0, 999})
	{
		EXPECT_EQ(judge(rest(strong), judgedAnswer(code, "", none)), fails) << code;
		EXPECT_EQ(CorvaneDownload::JudgeAnswer(rest(strong), judgedAnswer(code, "", none)).Outcome, Outcome::ServerError);
	}
	FCorvaneDownloadQuestion all = rest(strong);
	all.Total = all.OnDisk;
	EXPECT_EQ(judge(all, judgedAnswer(416, "bytes */100", strong)), there);
	EXPECT_EQ(judge(all, judgedAnswer(416, "bytes */100", none)), there);
	EXPECT_EQ(judge(all, judgedAnswer(416, "bytes */100", otherTag)), again);
	EXPECT_EQ(judge(all, judgedAnswer(416, "bytes */99", strong)), again);
	for (const bool newer : {false, true}) // than the target; whoever knows no If-Modified-Since sends the rest of the old file
	{
		FCorvaneDownloadQuestion question = rest(strong);
		question.IfNewerThan = FDateTime(629197085770000000 - (newer ? 10'000'000 : 0));
		const FCorvaneVersion tagAndDate{TEXT("\"a\""), text(changed), false};
		const FCorvaneDownloadJudgement judged = CorvaneDownload::JudgeAnswer(question, judgedAnswer(206, "bytes 100-299/300", tagAndDate));
		EXPECT_EQ(judged.Verdict, newer ? append : Verdict::Unchanged);
		EXPECT_EQ(utf8(judged.Version.LastModified), newer ? changed : ""); // it may go onto the file
		question.Version.LastModified = text(changed);
		EXPECT_EQ(judge(question, judgedAnswer(206, "bytes 100-299/300", strong)), newer ? append : Verdict::Unchanged);
		question.Total = question.OnDisk;
		EXPECT_EQ(judge(question, judgedAnswer(416, "bytes */100", strong)), newer ? there : Verdict::Unchanged);
	}
}

TEST(DownloadAnswer, BeginsAFileOnlyAtItsBeginning)
{
	FCorvaneDownloadQuestion question;
	const auto judged = [&question](const FCorvaneAnswer& told) { return CorvaneDownload::JudgeAnswer(question, told); };
	EXPECT_EQ(judged(judgedAnswer(200, "", strong, 5)).Total, 5);
	EXPECT_EQ(judged(judgedAnswer(200, "", strong, 5)).MostBytes, 5);
	EXPECT_EQ(judged(judgedAnswer(206, "bytes 0-9/50", strong, 10)).Total, 50);
	EXPECT_EQ(judged(judgedAnswer(206, "bytes 0-9/50", strong, 10)).MostBytes, 10);
	EXPECT_EQ(judged(judgedAnswer(206, "bytes 1-9/50", strong)).Verdict, Verdict::StartOverAgain);
	EXPECT_EQ(judged(judgedAnswer(416, "bytes */0", none)).Verdict, Verdict::StartOverAgain);

	FCorvaneAnswer packed = judgedAnswer(200, "", strong, 5);
	packed.bEncoded = true;
	EXPECT_TRUE(judged(packed).Version.ETag.IsEmpty()) << "nobody may go on in the middle of it";
	packed.Code = 206;
	packed.Range = CorvaneAnswer::ParseRange(TEXT("bytes 0-4/5"));
	EXPECT_EQ(judged(packed).Verdict, Verdict::StartOverAgain);

	question.ExpectedSize = 6;
	EXPECT_EQ(judged(judgedAnswer(200, "", strong, 5)).Outcome, Outcome::WrongSize);
	EXPECT_EQ(judged(judgedAnswer(200, "", strong, 6)).Verdict, Verdict::StartOverWithThis);
	EXPECT_EQ(judged(judgedAnswer(200, "", strong, -1)).MostBytes, 6);

	question.IfNewerThan = FDateTime(629197085770000000);
	EXPECT_EQ(judged(judgedAnswer(200, "", dated, 6)).Verdict, Verdict::Unchanged) << "a server that knows no If-Modified-Since";
	EXPECT_EQ(judged(judgedAnswer(304, "", none)).Verdict, Verdict::Unchanged);
	question.IfNewerThan = FDateTime(629197085770000000 - 10'000'000);
	EXPECT_EQ(judged(judgedAnswer(200, "", dated, 6)).Verdict, Verdict::StartOverWithThis);
}

TEST(DownloadAnswer, BringsTheWholeFileOnlyIfNothingTellsOfMore)
{
	struct Row
	{
		FCorvaneVersion before, told;
		bool tellsEnd; // the answer, which tells no length: by chunks
		int64 came; // of 300 that were told before
		bool isWhole;
	};
	const FCorvaneVersion other{TEXT("\"b\""), TEXT(""), false};
	for (const Row& row : {Row{strong, strong, false, 200, false}, {strong, strong, false, 300, true}, {strong, strong, true, 200, false},
			 {dated, dated, false, 200, false}, {weak, weak, false, 200, false}, {weak, weak, false, 300, true},
			 {weak, weak, true, 200, true}, {none, none, false, 200, false}, {strong, other, false, 200, true}})
	{
		for (const int64 onDisk : {0, 100})
		{
			FCorvaneDownloadQuestion question = rest(row.before);
			question.OnDisk = onDisk;
			FCorvaneAttemptEnd end;
			end.Exchange.End = ECorvaneExchangeEnd::Done;
			end.Exchange.Answer = judgedAnswer(200, "", row.told);
			end.Exchange.Answer.bTellsEnd = row.tellsEnd;
			end.Exchange.bAnswerIsWhole = end.bStartedOver = true;
			end.Length = row.came;
			const FCorvaneDownloadJudgement judged = CorvaneDownload::JudgeAnswer(question, end.Exchange.Answer);
			EXPECT_EQ(CorvaneDownload::BringsWholeFile(question, judged, end), row.isWhole)
				<< row.came << " bytes after " << onDisk << " of " << utf8(row.told.ETag) << utf8(row.told.LastModified);
		}
	}
	for (const bool isCompared : {false, true}) // all that was told is on disk
	{
		FCorvaneDownloadQuestion question = rest(weak);
		question.OnDisk = question.Compare = 300;
		FCorvaneAttemptEnd end;
		end.Exchange.End = ECorvaneExchangeEnd::Dropped;
		end.Exchange.Answer = judgedAnswer(206, "bytes 0-299/300", weak);
		end.Exchange.bAnswerIsWhole = true;
		end.bTailPassed = isCompared;
		end.Length = 300;
		const FCorvaneDownloadJudgement judged = CorvaneDownload::JudgeAnswer(question, end.Exchange.Answer);
		EXPECT_EQ(CorvaneDownload::BringsWholeFile(question, judged, end), isCompared);
	}
}

TEST(DownloadQuestion, SaysInItsHeadersWhatItIsAbout)
{
	FCorvaneDownloadOptions options;
	options.Headers.Add(TEXT("Accept"), TEXT("x/y"));
	options.Headers.Add(TEXT("If-None-Match"), TEXT("\"t\""));
	const auto lines = [&options](const FCorvaneDownloadQuestion& question)
	{
		std::string all;
		for (const TPair<FString, FString>& header : CorvaneDownload::MakeHeaders(question, options))
		{
			all += utf8(header.Key) + ": " + utf8(header.Value) + "\n";
		}
		return all;
	};
	FCorvaneDownloadQuestion first;
	first.IfNewerThan = FDateTime(629197085770000000);
	EXPECT_EQ(lines(first), std::string("Accept: x/y\nIf-None-Match: \"t\"\nIf-Modified-Since: ") + changed + "\n");
	EXPECT_EQ(lines(rest(strong)), "Accept: x/y\nRange: bytes=100-\nIf-Range: \"a\"\n");
	EXPECT_EQ(lines(rest(dated)), std::string("Accept: x/y\nRange: bytes=100-\nIf-Range: ") + changed + "\n");
	FCorvaneDownloadQuestion part = rest(weak);
	part.Until = 150;
	EXPECT_EQ(lines(part), "Accept: x/y\nRange: bytes=0-149\n");
}

TEST(DownloadOptions, AreRefusedWithASentenceThatTellsNoSecret)
{
	using Options = FCorvaneDownloadOptions;
	struct Case
	{
		const char* names; // a word of the sentence
		void (*spoil)(Options&, FString& url, FString& target, bool& hash);
	};
	const Case cases[] = {
		{"http://h", [](Options&, FString& url, FString&, bool&) { url = TEXT("http://u:secret@h/ x?secret"); }},
		{"address", [](Options&, FString& url, FString&, bool&) { url = TEXT("file:///x"); }},
		{"path", [](Options&, FString&, FString& target, bool&) { target = TEXT(""); }},
		{"folder", [](Options&, FString&, FString& target, bool&) { target = TEXT("a/"); }},
		{"control", [](Options&, FString&, FString& target, bool&) { target = TEXT("a\nb"); }},
		{"hash", [](Options&, FString&, FString&, bool& hash) { hash = false; }},
		{"attempt", [](Options& options, FString&, FString&, bool&) { options.Attempts = 0; }},
		{"waits", [](Options& options, FString&, FString&, bool&) { options.FirstWaitSeconds = -1; }},
		{"waits",
			[](Options& options, FString&, FString&, bool&) { options.LongestWaitSeconds = std::numeric_limits<double>::quiet_NaN(); }},
		{"silence", [](Options& options, FString&, FString&, bool&) { options.SilenceSeconds = 0; }},
		{"size", [](Options& options, FString&, FString&, bool&) { options.ExpectedSize = -2; }},
		{"bytes per second", [](Options& options, FString&, FString&, bool&) { options.BytesPerSecond = -1; }},
		{"X-Key", [](Options& options, FString&, FString&, bool&) { options.Headers.Add(TEXT("X-Key"), TEXT("secret\r\nX: y")); }},
		{"a b", [](Options& options, FString&, FString&, bool&) { options.Headers.Add(TEXT("a b"), TEXT("secret")); }},
		{"range", [](Options& options, FString&, FString&, bool&) { options.Headers.Add(TEXT("range"), TEXT("bytes=1-")); }},
	};
	for (const Case& each : cases)
	{
		Options options;
		FString url = TEXT("https://h/x"), target = TEXT("dir/file");
		bool hash = true;
		EXPECT_TRUE(CorvaneDownload::FindFault(url, target, options, hash).IsEmpty());
		each.spoil(options, url, target, hash);
		const std::string fault = utf8(CorvaneDownload::FindFault(url, target, options, hash));
		EXPECT_THAT(fault, testing::HasSubstr(each.names));
		EXPECT_THAT(fault, testing::Not(testing::HasSubstr("secret")));
	}
}
