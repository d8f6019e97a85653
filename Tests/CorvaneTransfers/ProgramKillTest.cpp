#include "ChildProgram.h"
#include "FileAnswers.h"
#include "MortalFiles.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "RawServer.h"
#include "TempDir.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <mutex>
#include <random>

namespace
{
	void startDownload(ChildProgram& program, const std::string& url, const std::string& target, int diesAtStep, bool movesReplace)
	{
		program.start({DOWNLOAD_CHILD, url, target, std::to_string(diesAtStep), movesReplace ? "1" : "0"});
	}

	/** How an origin sends one file: in pieces, with the connection broken off behind each, so that every run resumes. */
	class FrailServer
	{
	public:
		/** @param bytesToLive  sent bytes after which the program is killed, and then so many microseconds; -1 = never. */
		void expect(const Version& inVersion, std::int64_t bytesToLive, int inMicroseconds)
		{
			const std::scoped_lock lock(mutex);
			version = inVersion;
			left = bytesToLive;
			microseconds = inMicroseconds;
		}

		std::string url() const { return server.url(); }
		ChildProgram program;
		std::atomic<int> timesAsked{0};
		std::atomic<int> partsSent{0};

	private:
		static constexpr size_t mostOfOnePiece = 50'000;
		static constexpr size_t mostAtOnce = 10'000;

		void serve(Connection& connection)
		{
			const std::string head = connection.readHead();
			++timesAsked;
			std::string whole;
			{
				const std::scoped_lock lock(mutex);
				whole = answerOf(version, Ranges::Honest, head);
			}
			partsSent += whole.starts_with("HTTP/1.1 206") ? 1 : 0;
			const size_t piece = std::min(whole.size(), whole.find("\r\n\r\n") + 4 + mostOfOnePiece);
			for (size_t begin = 0; begin < piece; begin += mostAtOnce)
			{
				const size_t number = std::min(mostAtOnce, piece - begin);
				killWhenDue(static_cast<std::int64_t>(number));
				connection.send(std::string_view(whole).substr(begin, number));
			}
			killWhenDue(piece == whole.size() ? INT64_MAX : 0);
		}

		void killWhenDue(std::int64_t bytes)
		{
			int wait = 0;
			{
				const std::scoped_lock lock(mutex);
				const bool isDue = left >= 0 && left < bytes;
				left = isDue ? -1 : left < 0 ? left : left - bytes;
				if (!isDue)
				{
					return;
				}
				wait = microseconds;
			}
			std::this_thread::sleep_for(std::chrono::microseconds(wait)); // moments between two sendings, too
			program.kill();
		}

		std::mutex mutex; // guards what follows
		Version version;
		std::int64_t left = -1;
		int microseconds = 0;
		const RawServer server{[this](Connection& connection) { serve(connection); }};
	};

	Version newVersion(int number)
	{
		return {randomBytes(120'000, static_cast<unsigned>(number)), fmt::format("ETag: \"{}\"\r\n", number)};
	}
} // namespace

TEST(KilledProgram, LeavesTheOldFileOrTheNewOneAtRandomMoments)
{
	const TempDir dir(quickPlace());
	FrailServer server;
	std::mt19937 random(17);
	Version current = newVersion(0);
	std::string seen = "old";
	int finished = 0;
	for (int kills = 0; kills < 200;)
	{
		SCOPED_TRACE(fmt::format("after {} kills and {} downloads", kills, finished));
		if (kills == 0)
		{
			dir.write("file", seen);
		}
		const int askedBefore = server.timesAsked;
		server.expect(
			current, static_cast<std::int64_t>(random() % 150'000), 1 << random() % 20); // from at once to long enough for a slow build
		startDownload(server.program, server.url(), dir.path("file"), 0, true);
		const int status = server.program.wait();
		ASSERT_TRUE(status == 0 || status == -1) << status;
		const bool wasWhole = server.timesAsked == askedBefore; // a run that was killed behind its last step but one
		const std::string now = dir.read("file");
		ASSERT_TRUE(now == current.bytes || (now == seen && (status != 0 || wasWhole)));
		seen = now;
		kills += status == 0 ? 0 : 1;
		finished += status == 0 ? 1 : 0;
		if (status == 0 || random() % 8 == 0) // the server has another file by now
		{
			current = newVersion(kills + 1000 * finished);
		}
	}
	server.expect(current, -1, 0);
	startDownload(server.program, server.url(), dir.path("file"), 0, true);
	ASSERT_EQ(server.program.wait(), 0);
	EXPECT_TRUE(dir.read("file") == current.bytes);
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "nothing else is left";
	EXPECT_GT(finished, 5);
	EXPECT_GT(server.partsSent, 100);
}

TEST(KilledProgram, LeavesTheOldFileOrTheNewOneAtEachStepOfItsFiles)
{
	FrailServer server;
	const Version version = newVersion(1);
	for (const bool movesReplace : {true, false})
	{
		int step = 0;
		for (int status = MortalFiles::exitCode; status == MortalFiles::exitCode;)
		{
			const TempDir dir(quickPlace());
			dir.write("file", "old");
			SCOPED_TRACE(fmt::format("killed at step {}", ++step));
			server.expect(version, -1, 0);
			startDownload(server.program, server.url(), dir.path("file"), step, movesReplace);
			status = server.program.wait();
			ASSERT_TRUE(status == 0 || status == MortalFiles::exitCode) << status;
			const std::string now = dir.read(movesReplace || dir.exists("file") ? "file" : "file.corvold");
			ASSERT_TRUE(now == "old" || now == version.bytes);
			startDownload(server.program, server.url(), dir.path("file"), 0, movesReplace);
			ASSERT_EQ(server.program.wait(), 0);
			ASSERT_TRUE(dir.read("file") == version.bytes);
			ASSERT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "nothing else is left";
		}
		EXPECT_GT(step, 20);
	}
}
