#include "Attempts/Address.h"
#include "Attempts/Answer.h"
#include "Attempts/HttpDate.h"
#include "Attempts/RetryPolicy.h"
#include "TextSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace
{
	constexpr int64 november1994 = 629197085770000000; // ticks of 1994-11-06 08:49:37

	FCorvaneAnswer answerWith(int code, std::initializer_list<std::pair<const char*, const char*>> lines)
	{
		FCorvaneAnswerReader reader;
		reader.TakeStatus(code);
		for (const auto& [name, value] : lines)
		{
			reader.TakeHeader(text(name), text(value));
		}
		return reader.Get();
	}
} // namespace

TEST(HttpDate, ReadsTheThreeFormsAndNothingElse)
{
	for (const char* same : {"Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37 1994"})
	{
		EXPECT_EQ(CorvaneHttpDate::Parse(text(same)).GetTicks(), november1994) << same;
	}
	for (const char* none : {"", "0", "soon", "Sun, 06 Nov 1994 08:49:37", "Sun, 06 Nov 1994 08:49:37 CET", "Sun, 31 Feb 1994 08:49:37 GMT",
			 "Sun, 00 Nov 1994 08:49:37 GMT", "Sun, 06 Nov 0000 08:49:37 GMT", "Sun, 06 ovD 1994 08:49:37 GMT",
			 "Sun, 06 Nov 1994 24:00:00 GMT", "Sun, 06 Nov 1994 08-49-37 GMT", "Sun, 06 Nov 1994 8:49:37 GMT",
			 "Sun, 29 Feb 1900 00:00:00 GMT"})
	{
		EXPECT_EQ(CorvaneHttpDate::Parse(text(none)).GetTicks(), 0) << none;
	}
	for (const char* date : {"Sun, 06 Nov 1994 08:49:37 GMT", "Mon, 01 Jan 0001 00:00:00 GMT", "Tue, 29 Feb 2000 23:59:59 GMT",
			 "Sun, 01 Jan 2017 00:00:00 GMT", "Sat, 31 Dec 2016 00:00:00 GMT", "Fri, 31 Dec 9999 23:59:59 GMT"})
	{
		EXPECT_EQ(utf8(CorvaneHttpDate::ToText(CorvaneHttpDate::Parse(text(date)))), date);
	}
}

TEST(Answer, ReadsRangesOfFriendAndFoe)
{
	for (const auto& [value, valid, first, last, total] :
		{std::tuple("bytes 0-99/1000", true, 0ll, 99ll, 1000ll),
			{"Bytes 3000000000-3999999999/5000000000", true, 3000000000, 3999999999, 5000000000}, {"bytes 0-99/*", true, 0, 99, -1},
			{"bytes */1000", false, -1, -1, 1000}, {"bytes 5-4/1000", false, 5, 4, 1000}, {"bytes 0-1000/1000", false, 0, 1000, 1000},
			{"bytes 0-99/x", false, 0, 99, -1}, {"bytes 0-99/99999999999999999999", false, 0, 99, -1}, {"bytes -5-9/10", false, -1, -1, 10},
			{"items 0-9/10", false, -1, -1, -1}, {"bytes 0-9", false, -1, -1, -1}, {"", false, -1, -1, -1}})
	{
		const FCorvaneContentRange range = CorvaneAnswer::ParseRange(text(value));
		EXPECT_EQ(std::tuple(range.bValid, range.First, range.Last, range.Total), std::tuple(valid, first, last, total)) << value;
	}
}

TEST(Answer, KnowsTheLengthOnlyWhereItCanBeCompared)
{
	EXPECT_EQ(answerWith(200, {{"content-length", "5"}}).ToldTotal(), 5);
	EXPECT_EQ(answerWith(206, {{"Content-Length", "5"}, {"Content-Range", "bytes 5-9/10"}}).ToldTotal(), 10);
	for (const auto& [name, value] :
		{std::pair("Content-Encoding", "gzip"), {"Transfer-Encoding", "chunked"}, {"Content-Length", "-5"}, {"Content-Length", "5, 5"}})
	{
		EXPECT_EQ(answerWith(200, {{"Content-Length", "5"}, {name, value}}).ToldTotal(), -1) << name;
		EXPECT_EQ(answerWith(200, {{name, value}, {"Content-Encoding", "identity"}}).bEncoded, std::string(value) == "gzip");
	}
	FCorvaneAnswerReader reader;
	reader.TakeStatus(100);
	reader.TakeHeader(TEXT("ETag"), TEXT("\"early\""));
	reader.TakeHeader(TEXT("Transfer-Encoding"), TEXT("chunked"));
	reader.TakeStatus(200);
	reader.TakeHeader(TEXT("Content-Length"), TEXT("7"));
	EXPECT_EQ(reader.Get().ToldTotal(), 7) << "only the last block of lines counts";
	EXPECT_TRUE(reader.Get().Version.ETag.IsEmpty());
}

TEST(Version, NamesInIfRangeOnlyWhatIsStrong)
{
	constexpr const char* old = "Sun, 06 Nov 1994 08:49:37 GMT";
	constexpr const char* minuteLater = "Sun, 06 Nov 1994 08:50:37 GMT";
	constexpr const char* secondsLater = "Sun, 06 Nov 1994 08:50:36 GMT";
	for (const auto& [tag, changed, told, named] : {std::tuple("\"a\"", old, minuteLater, "\"a\""), {"W/\"a\"", old, minuteLater, old},
			 {"W/\"a\"", old, secondsLater, ""}, {"a", "", "", ""}, {"\"", "", "", ""}, {"", old, "", old}, {"", old, "nonsense", ""},
			 {"", "nonsense", "", ""}, {"", old, secondsLater, ""}})
	{
		const FCorvaneVersion version = answerWith(200, {{"ETag", tag}, {"Last-Modified", changed}, {"Date", told}}).Version;
		EXPECT_EQ(utf8(version.ForIfRange()), named) << tag << changed << told;
		const FCorvaneVersion turned = answerWith(200, {{"Date", told}, {"Last-Modified", changed}, {"ETag", tag}}).Version;
		EXPECT_EQ(utf8(turned.ForIfRange()), named) << "in another order";
		const FCorvaneVersion later = FCorvaneVersion::FromDisk(version.ETag, version.DateForDisk());
		EXPECT_EQ(utf8(later.ForIfRange()), named) << "a later run knows as much";
		EXPECT_EQ(utf8(later.LastModified), changed);
	}
}

TEST(Version, IsAnotherWhenAnythingSaysSo)
{
	const auto version = [](const char* tag, const char* date) { return FCorvaneVersion{text(tag), text(date), true}; };
	for (const auto& [one, other, maySame] :
		{std::tuple(version("\"a\"", "x"), version("\"a\"", "y"), true), {version("\"a\"", "x"), version("\"A\"", "x"), false},
			{version("\"a\"", ""), version("W/\"a\"", ""), false}, {version("W/\"a\"", "x"), version("W/\"a\"", "y"), false},
			{version("W/\"a\"", "x"), version("W/\"a\"", "x"), true}, {version("\"a\"", "x"), version("", "y"), false},
			{version("\"a\"", "x"), version("", ""), true}, {version("", "x"), version("\"b\"", "x"), true}})
	{
		EXPECT_EQ(one.MayBe(other), maySame) << utf8(one.ETag) << utf8(other.ETag);
		EXPECT_EQ(other.MayBe(one), maySame);
	}
}

TEST(Retry, WaitsLongerEachTimeAndAsLongAsItIsTold)
{
	for (const auto& [failures, wait] : {std::pair(0, 2.0), {1, 2.0}, {2, 4.0}, {5, 32.0}, {6, 60.0}, {2'000'000'000, 60.0}})
	{
		EXPECT_DOUBLE_EQ(CorvaneRetry::Backoff(failures, 2, 60, 0.5), wait / 2);
		EXPECT_DOUBLE_EQ(CorvaneRetry::Backoff(failures, 2, 60, 0), 0);
	}
	EXPECT_DOUBLE_EQ(CorvaneRetry::Backoff(2'000'000'000, 0, 60, 0.5), 0); // and does not count that far
	const FDateTime now(november1994 + 10 * 10'000'000);
	for (const auto& [value, seconds] : {std::pair("120", 120.0), {"0", 0.0}, {"Sun, 06 Nov 1994 08:49:57 GMT", 10.0},
			 {"Sun, 06 Nov 1994 08:49:37 GMT", 0.0}, {"999999999999999999", 31536000.0}, {"Fri, 31 Dec 9999 23:59:59 GMT", 31536000.0},
			 {"99999999999999999999", -1.0}, {"-5", -1.0}, {"1.5", -1.0}, {"", -1.0}, {"soon", -1.0}})
	{
		EXPECT_DOUBLE_EQ(CorvaneRetry::ParseRetryAfter(text(value), now), seconds) << value;
	}
}

TEST(Address, HasAHostAndShowsNoSecret)
{
	struct Case
	{
		const char* url;
		bool usable;
		const char* withoutUser;
		const char* forLog;
	};
	for (const auto& [url, usable, withoutUser, forLog] : {Case{"http://h/a?k=1#f", true, "http://h/a?k=1#f", "http://h/a"},
			 {"HTTPS://u:p@h:1/a@b", true, "HTTPS://h:1/a@b", "HTTPS://h:1/a@b"},
			 {"http://u:p@x@[::1]?q@r", true, "http://[::1]?q@r", "http://[::1]"}, {"http://", false, "http://", "http://"},
			 {"http://u@/a", false, "http:///a", "http:///a"}, {"http://:80", false, "http://:80", "http://:80"},
			 {"http://h/a b", false, "http://h/a b", "http://h/a b"}, {"ftp://u@h", false, "ftp://h", "ftp://h"}, {"", false, "", ""}})
	{
		EXPECT_EQ(CorvaneAddress::IsUsable(text(url)), usable) << url;
		EXPECT_EQ(utf8(CorvaneAddress::WithoutUser(text(url))), withoutUser);
		EXPECT_EQ(utf8(CorvaneAddress::ForLog(text(url))), forLog);
	}
	for (const auto& [url, host] : {std::pair("http://u@h:80/a", "http://h"), {"https://h:443", "https://h"},
			 {"http://h:443/a", "http://h:443"}, {"https://h/a:443", "https://h"}})
	{
		EXPECT_EQ(utf8(CorvaneAddress::OriginWithoutUsualPort(text(url))), host);
	}
}
