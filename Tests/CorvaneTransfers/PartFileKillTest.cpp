#include "MortalFiles.h"
#include "PartFileKit.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace
{
	constexpr size_t tailSize = 64 << 10;
	constexpr size_t pieceSize = 50'000;

	const Source first = {randomBytes(120'000), "\"1\""};
	/** As long as the first, and with the same end: only what stands before it tells them apart. */
	const Source laterSource = {randomBytes(120'000 - tailSize, 1) + first.Bytes.substr(120'000 - tailSize), "\"2\""};
	const std::string oldBytes = randomBytes(1000);

	/** What a run has promised, for whoever looks when it has died. */
	struct Promise
	{
		int64 Vouched = 0; // bytes of the first source
	};

	Promise& promised()
	{
		static void* const Shared = mmap(nullptr, sizeof(Promise), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
		return *static_cast<Promise*>(Shared);
	}

	void check(bool bHolds, const char* What)
	{
		if (!bHolds)
		{
			fprintf(stderr, "%s\n", What);
			_exit(1);
		}
	}

	/** Downloads some pieces of what is missing, and vouches for each where there is a second. @return whether that was the last of it. */
	bool downloadSome(const std::string& Target, const Source& From, size_t MostPieces, size_t PieceSize)
	{
		FCorvanePartFile File;
		const FCorvaneOpenedPart Opened = File.Open(text(Target), sourceAddress, true);
		check(Opened.Result.IsOk(), "the target is free and can be written to");
		const bool bSame = utf8(Opened.Source.ETag) == From.ETag && (Opened.Length > 0 || Opened.bWholeAlready);
		check(Opened.Length >= promised().Vouched, "bytes that were vouched for are gone");
		if (!bSame)
		{
			promised().Vouched = 0;
			check(File.StartOver(factsOf(From)).IsOk(), "start over");
		}
		for (size_t Piece = 0; Piece < MostPieces && File.GetLength() < static_cast<int64>(From.Bytes.size()); ++Piece)
		{
			check(append(File, std::string_view(From.Bytes).substr(static_cast<size_t>(File.GetLength()), PieceSize)), "append");
			const bool bVouches = PieceSize < From.Bytes.size();
			check(!bVouches || File.Checkpoint().IsOk(), "checkpoint");
			promised().Vouched = bVouches && From.ETag == first.ETag ? File.GetLength() : 0;
		}
		if (File.GetLength() < static_cast<int64>(From.Bytes.size()))
		{
			return false;
		}
		FCorvaneFinishWish Wish;
		Wish.FileTime = FDateTime::FromUnixTimestamp(1'000'000'000);
		promised().Vouched = 0; // from here on it may be done
		check(File.Finish(Wish).Result.IsOk(), "finish");
		return true;
	}

	void download(const std::string& Target, const Source& From, size_t PieceSize)
	{
		const bool bDone = downloadSome(Target, From, 1, PieceSize); // paused behind the first piece
		check(bDone || downloadSome(Target, From, SIZE_MAX, PieceSize), "all is there");
	}

	void runAndDie(const std::string& Target, const Source& From, const Fate& HowItEnds, size_t PieceSize)
	{
		const pid_t Child = fork();
		if (Child == 0)
		{
			{
				MortalFiles Files(HowItEnds);
				download(Target, From, PieceSize);
			}
			_exit(0);
		}
		int Status = 0;
		waitpid(Child, &Status, 0);
		EXPECT_TRUE(WIFEXITED(Status)) << "it crashed";
		EXPECT_TRUE(WEXITSTATUS(Status) == 0 || WEXITSTATUS(Status) == MortalFiles::exitCode);
	}

	class KilledPartFile : public testing::TestWithParam<std::tuple<Death, bool, size_t>>
	{
	protected:
		KilledPartFile() { std::tie(HowItEnds.HowItDies, HowItEnds.bMovesReplace, PieceSize) = GetParam(); }

		Fate diesAt(int Step) const
		{
			Fate Result = HowItEnds;
			Result.DiesAtStep = Step;
			return Result;
		}

		int stepsOfOneRun() const
		{
			const TempDir Dir{quickPlace()};
			MortalFiles Files(diesAt(0));
			download(Dir.write("file", oldBytes), first, PieceSize);
			return Files.numSteps();
		}

		/** @return the whole file that stands under the target's name, or the one that stands aside for it. */
		std::string visible(const TempDir& Dir) const
		{
			return Dir.read(HowItEnds.bMovesReplace || Dir.exists("file") ? "file" : "file.corvold");
		}

		/** Two runs die, the third goes to its end; the second may find another file on the server. */
		void dieTwice(const Source& Second, int FirstStep, int SecondStep)
		{
			const TempDir Dir{quickPlace()};
			const std::string Target = Dir.write("file", oldBytes);
			promised() = {};
			runAndDie(Target, first, diesAt(FirstStep), PieceSize);
			std::string Seen = visible(Dir);
			ASSERT_TRUE(Seen == oldBytes || Seen == first.Bytes);
			runAndDie(Target, Second, diesAt(SecondStep), PieceSize);
			Seen = visible(Dir);
			ASSERT_TRUE(Seen == oldBytes || Seen == first.Bytes || Seen == Second.Bytes);
			runAndDie(Target, first, diesAt(0), PieceSize);
			ASSERT_TRUE(Dir.read("file") == first.Bytes);
			ASSERT_EQ(std::distance(std::filesystem::directory_iterator(Dir.path()), {}), 1) << "nothing else is left";
		}

		Fate HowItEnds;
		size_t PieceSize;
	};
} // namespace

TEST_P(KilledPartFile, LeavesTheOldFileOrTheNewOneAndGoesOn)
{
	const int NumSteps = stepsOfOneRun();
	ASSERT_GT(NumSteps, PieceSize == pieceSize ? 25 : 3);
	for (int Step = 1; Step <= NumSteps; ++Step)
	{
		const Source& Second = Step % 2 == 0 ? first : laterSource;
		const int SecondStep = 1 + Step * 7 % NumSteps;
		dieTwice(Second, Step, SecondStep);
		ASSERT_FALSE(HasFailure()) << "killed at step " << Step << " of " << NumSteps << ", then at " << SecondStep << ", source "
								   << Second.ETag;
	}
}

INSTANTIATE_TEST_SUITE_P(Deaths, KilledPartFile,
	testing::Combine(testing::Values(Death::Killed, Death::PowerCut, Death::PowerCutZeros), testing::Bool(),
		testing::Values(pieceSize, first.Bytes.size())));
