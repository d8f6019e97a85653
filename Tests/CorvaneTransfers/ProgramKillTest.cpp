#include "ChildProgram.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "MortalFiles.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <condition_variable>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <mutex>
#include <random>
#include <thread>

namespace
{
	/** A program that downloads, and may be killed a while after something has happened. */
	class Downloader : public ChildProgram
	{
	public:
		void start(const std::string& url, const std::string& target, int diesAtStep, bool movesReplace)
		{
			stopKilling();
			ChildProgram::start({DOWNLOAD_CHILD, url, target, std::to_string(diesAtStep), movesReplace ? "1" : "0"});
		}

		void killIn(std::chrono::microseconds time)
		{
			const std::scoped_lock lock(killing);
			killers.emplace_back(
				[this, time](const std::stop_token& stop)
				{
					std::unique_lock lockOfWait(killing);
					if (!std::condition_variable_any().wait_for(lockOfWait, stop, time, [&] { return stop.stop_requested(); }))
					{
						kill();
					}
				});
		}

	private:
		/** Those of an earlier run are not meant for the next one. */
		void stopKilling()
		{
			std::vector<std::jthread> late;
			const std::scoped_lock lock(killing);
			late.swap(killers);
		}

		std::mutex killing; // guards what follows
		std::vector<std::jthread> killers;
	};

	/** Bytes whose reader is killed a while after so many of them were handed out, or the last one was. */
	class DeadlyContent : public Lab::Content
	{
	public:
		DeadlyContent(const std::string& bytes, Downloader& inReader, std::uint64_t inBytesToLive, int inMicroseconds)
			: content(Lab::bytesContent(bytes))
			, reader(inReader)
			, left(inBytesToLive)
			, time(inMicroseconds)
		{
		}
		std::uint64_t size() const override { return content->size(); }
		std::uint64_t fingerprint() const override { return content->fingerprint(); }
		std::string_view at(std::uint64_t place, std::size_t most) const override
		{
			const std::string_view piece = content->at(place, most);
			const bool isLast = place + piece.size() == size();
			if (!isKilled && (piece.size() > left || isLast))
			{
				isKilled = true;
				reader.killIn(time);
			}
			left -= std::min<std::uint64_t>(left, piece.size());
			return piece;
		}

	private:
		const Lab::ContentPtr content;
		Downloader& reader;
		mutable std::uint64_t left;
		mutable bool isKilled = false;
		const std::chrono::microseconds time;
	};

	/** Serves a file whose connection breaks again and again, so that every run resumes. */
	void serve(Lab::Origin& origin, Lab::ContentPtr content)
	{
		origin.at("/", Lab::file(std::move(content)), Lab::pieces({10'000}), Lab::dropAfter(50'000));
	}

	std::string newVersion(int number)
	{
		return randomBytes(120'000, static_cast<unsigned>(number));
	}
} // namespace

TEST(KilledProgram, LeavesTheOldFileOrTheNewOneAtRandomMoments)
{
	const TempDir dir(quickPlace());
	Downloader program;
	Lab::Origin origin;
	std::mt19937 random(17);
	std::string current = newVersion(0);
	std::string seen = "old";
	int finished = 0;
	for (int kills = 0; kills < 200;)
	{
		SCOPED_TRACE(fmt::format("after {} kills and {} downloads", kills, finished));
		if (kills == 0)
		{
			dir.write("file", seen);
		}
		const auto askedBefore = origin.requests();
		const std::uint64_t bytesToLive = random() % 150'000;
		serve(origin, std::make_shared<DeadlyContent>(current, program, bytesToLive, 1 << random() % 20)); // long enough for a slow build
		program.start(origin.url(), dir.path("file"), 0, true);
		const int status = program.wait();
		ASSERT_TRUE(status == 0 || status == -1) << status;
		const bool wasWhole = origin.requests() == askedBefore; // a run that was killed behind its last step but one
		const std::string now = dir.read("file");
		ASSERT_TRUE(now == current || (now == seen && (status != 0 || wasWhole)));
		seen = now;
		kills += status == 0 ? 0 : 1;
		finished += status == 0 ? 1 : 0;
		if (status == 0 || random() % 8 == 0) // the server has another file by now
		{
			current = newVersion(kills + 1000 * finished);
		}
	}
	serve(origin, Lab::bytesContent(current));
	program.start(origin.url(), dir.path("file"), 0, true);
	ASSERT_EQ(program.wait(), 0);
	EXPECT_TRUE(dir.read("file") == current);
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "nothing else is left";
	EXPECT_GT(finished, 5);
	const std::vector<Lab::Exchange> log = origin.log();
	EXPECT_GT(std::count_if(log.begin(), log.end(), [](const Lab::Exchange& each) { return each.status == 206; }), 100);
}

TEST(KilledProgram, LeavesTheOldFileOrTheNewOneAtEachStepOfItsFiles)
{
	Downloader program;
	Lab::Origin origin;
	const std::string version = newVersion(1);
	serve(origin, Lab::bytesContent(version));
	for (const bool movesReplace : {true, false})
	{
		int step = 0;
		for (int status = MortalFiles::exitCode; status == MortalFiles::exitCode;)
		{
			const TempDir dir(quickPlace());
			dir.write("file", "old");
			SCOPED_TRACE(fmt::format("killed at step {}", ++step));
			program.start(origin.url(), dir.path("file"), step, movesReplace);
			status = program.wait();
			ASSERT_TRUE(status == 0 || status == MortalFiles::exitCode) << status;
			const std::string now = dir.read(movesReplace || dir.exists("file") ? "file" : "file.corvold");
			ASSERT_TRUE(now == "old" || now == version);
			program.start(origin.url(), dir.path("file"), 0, movesReplace);
			ASSERT_EQ(program.wait(), 0);
			ASSERT_TRUE(dir.read("file") == version);
			ASSERT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "nothing else is left";
		}
		EXPECT_GT(step, 15);
	}
}
