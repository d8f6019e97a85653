#include "FileSizeLimit.h"
#include "Files/FileBlocks.h"
#include "ForwardingFiles.h"
#include "GameLoop.h"
#include "PartFileKit.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "Waiting.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using EOutcome = ECorvaneTransferOutcome;

namespace
{
	const Source source = {randomBytes(200'000), "\"1\""};

	class PartFile : public testing::Test
	{
	protected:
		FCorvaneOpenedPart open(FCorvanePartFile& File, const char* Address = sourceAddress) const
		{
			return File.Open(Target, Address, true);
		}

		/** Opens, begins, and takes so many bytes. */
		void begin(FCorvanePartFile& File, size_t Number, const FCorvaneSourceFacts& Facts = factsOf(source)) const
		{
			ASSERT_TRUE(open(File).Result.IsOk());
			ASSERT_TRUE(File.StartOver(Facts).IsOk());
			ASSERT_TRUE(append(File, source.Bytes.substr(0, Number)));
		}

		/** Two checkpoints, and the program ends. */
		void leaveTwoCheckpoints() const
		{
			FCorvanePartFile File;
			begin(File, 90'000);
			ASSERT_TRUE(File.Checkpoint().IsOk());
			ASSERT_TRUE(append(File, source.Bytes.substr(90'000, 30'000)));
		}

		/** Fetches what is missing. */
		FCorvaneFinished goOn(const FCorvaneFinishWish& Wish = {}) const
		{
			FCorvanePartFile File;
			const FCorvaneOpenedPart Opened = open(File);
			if (Opened.Length == 0)
			{
				EXPECT_TRUE(File.StartOver(factsOf(source)).IsOk());
			}
			EXPECT_TRUE(append(File, source.Bytes.substr(static_cast<size_t>(Opened.Length))));
			return File.Finish(Wish);
		}

		FCorvaneJournal journal() const
		{
			TArray<uint8> Journal;
			const auto Size = static_cast<int64>(fs::file_size(Dir.path("file.corvjournal")));
			return CorvaneFileBlocks::Read(Target + ".corvjournal", 0, Size, Journal) ? FCorvaneJournal::Read(Journal) : FCorvaneJournal();
		}

		std::set<std::string> names() const
		{
			std::set<std::string> Names;
			for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Dir.path()))
			{
				Names.insert(Entry.path().lexically_relative(Dir.path()));
			}
			return Names;
		}

		void append(const char* Name, std::string_view Bytes) const { Dir.write(Name, Dir.read(Name) + std::string(Bytes)); }
		static bool append(FCorvanePartFile& File, std::string_view Bytes) { return ::append(File, Bytes); }

		const TempDir Dir;
		const FString Target = text(Dir.path("file"));
	};
} // namespace

TEST_F(PartFile, WhatStandsInTheWayIsSaidAndNothingIsLeft)
{
	fs::create_directories(Dir.path("folder"));
	fs::create_directories(Dir.path("a.corvpart"));
	fs::create_directories(Dir.path("b.corvjournal"));
	Dir.write("plain", "");
	fs::permissions(Dir.write("readOnly", ""), fs::perms::owner_read);
	const std::set<std::string> Before = names();
	for (const auto& [Path, Outcome, Says] : {std::tuple(Dir.path("folder"), EOutcome::CannotWrite, "is a folder"),
			 {Dir.path("a"), EOutcome::CannotWrite, "a.corvpart is a folder"},
			 {Dir.path("b"), EOutcome::CannotWrite, "b.corvjournal is a folder"},
			 {Dir.path("plain/below"), EOutcome::CannotWrite, "plain cannot be made"},
			 {Dir.path("readOnly"), EOutcome::CannotWrite, "read-only"},
			 {"/proc/new/file", EOutcome::CannotWrite, "/proc/new cannot be made"}, {"/proc/file", EOutcome::CannotWrite, "cannot be made"},
			 {Dir.path() + "/", EOutcome::Refused, "names no file"}, {"", EOutcome::Refused, "names no file"}})
	{
		FCorvanePartFile File;
		const FCorvaneFileResult Result = File.Open(text(Path), sourceAddress, true).Result;
		EXPECT_EQ(Result.Failure, Outcome) << Path;
		EXPECT_NE(utf8(Result.Sentence).find(Says), std::string::npos) << utf8(Result.Sentence);
	}
	EXPECT_EQ(names(), Before);
}

TEST_F(PartFile, ASecondTransferIsRefusedHereAndInAnotherProgram)
{
	FCorvanePartFile File;
	for (const bool bVouchedFor : {false, true})
	{
		int Ready[2];
		ASSERT_EQ(pipe(Ready), 0);
		const pid_t Child = fork();
		if (Child == 0)
		{
			begin(File, 70'000);
			if (bVouchedFor)
			{
				File.Checkpoint();
			}
			write(Ready[1], "!", 1);
			pause();
		}
		close(Ready[1]);
		char Byte = 0;
		ASSERT_EQ(read(Ready[0], &Byte, 1), 1);
		close(Ready[0]);
		const FCorvaneFileResult Refused = open(File).Result;
		EXPECT_EQ(Refused.Failure, EOutcome::Refused);
		EXPECT_NE(utf8(Refused.Sentence).find("another program"), std::string::npos) << utf8(Refused.Sentence);
		EXPECT_EQ(Dir.read("file.corvpart").size(), 70'000u);
		kill(Child, SIGKILL);
		waitpid(Child, nullptr, 0);
		EXPECT_EQ(open(File).Length, bVouchedFor ? 70'000 : 0);
		if (!bVouchedFor)
		{
			File.Close();
		}
	}
	FCorvanePartFile Second;
	EXPECT_EQ(Second.Open(text(Dir.path("./x/../file")), sourceAddress, true).Result.Failure, EOutcome::Refused);
	File.Discard();
	Second.Discard(); // has nothing
	EXPECT_TRUE(names().empty());
	EXPECT_TRUE(open(Second).Result.IsOk());
}

TEST_F(PartFile, WhatAnotherProgramFinishesWhileItIsOpenedIsNotTouched)
{
	struct FilesOfTwo : ForwardingFiles
	{
		IFileHandle* OpenWrite(const TCHAR* Name, bool bAppend, bool bAllowRead) override
		{
			IFileHandle* const Handle = ForwardingFiles::OpenWrite(Name, bAppend, bAllowRead);
			return MoveFile(*FString(Name).LeftChop(9), Name) ? Handle : nullptr;
		}
	};
	Dir.write("file.corvpart", "whole");
	FCorvanePartFile File;
	{
		const FilesOfTwo Files;
		EXPECT_EQ(open(File).Result.Failure, EOutcome::Refused);
	}
	EXPECT_EQ(names(), std::set<std::string>{"file"});
	EXPECT_EQ(Dir.read("file"), "whole");
}

TEST_F(PartFile, WhatTheJournalDoesNotVouchForIsFetchedAgain)
{
	const std::string Journal = "file.corvjournal";
	const std::string Part = "file.corvpart";
	struct FCase
	{
		const char* Name;
		std::function<void()> Spoil;
		int64 Length;
	};
	for (const FCase& Case :
		std::vector<FCase>{{"nothing", [] {}, 120'000}, {"more bytes than told", [&] { append("file.corvpart", "more"); }, 120'000},
			{"a torn line", [&] { fs::resize_file(Dir.path(Journal), fs::file_size(Dir.path(Journal)) - 1); }, 90'000},
			{"fewer bytes than told", [&] { fs::resize_file(Dir.path(Part), 119'999); }, 0},
			{"another last byte",
				[&]
				{
					fs::resize_file(Dir.path(Part), 119'999);
					append("file.corvpart", "?");
				},
				0},
			{"no journal", [&] { fs::remove(Dir.path(Journal)); }, 0}, {"a foreign journal", [&] { Dir.write(Journal, "{}\n{}\n"); }, 0},
			{"an empty journal", [&] { Dir.write(Journal, ""); }, 0}, {"no part file", [&] { fs::remove(Dir.path(Part)); }, 0}})
	{
		leaveTwoCheckpoints();
		Case.Spoil();
		FCorvanePartFile File;
		const FCorvaneOpenedPart Opened = open(File);
		EXPECT_EQ(Opened.Length, Case.Length) << Case.Name;
		EXPECT_EQ(Opened.WhyFromStart.IsEmpty(), Case.Length > 0 || !Dir.exists(Part)) << Case.Name;
		EXPECT_EQ(utf8(Opened.Source.ETag), Case.Length > 0 ? source.ETag : "") << Case.Name;
		File.Close();
		EXPECT_TRUE(goOn().Result.IsOk()) << Case.Name;
		EXPECT_EQ(Dir.read("file"), source.Bytes) << Case.Name;
		EXPECT_EQ(names(), std::set<std::string>{"file"}) << Case.Name;
	}
	leaveTwoCheckpoints();
	FCorvanePartFile File;
	EXPECT_EQ(open(File, "http://host/FILE.bin").Length, 0);
	EXPECT_EQ(File.Open(Target, sourceAddress, false).Length, 0);
	EXPECT_EQ(open(File).Length, 120'000) << "nobody has begun anew";
	TArray<uint8> Tail;
	EXPECT_TRUE(File.ReadTail(1000, Tail).IsOk());
	EXPECT_EQ(bytesOf(Tail), source.Bytes.substr(119'000, 1000));
	File.Close();
	Dir.write("file.corvjournal", bytesOf(FCorvaneJournal::SourceLine(factsOf(source))));
	EXPECT_EQ(open(File).Length, 0);
	File.Close();
	EXPECT_EQ(names(), std::set<std::string>{"file"}) << "what nobody ever vouched for";
}

TEST_F(PartFile, AFullDiskTakesNothingThatIsThere)
{
	leaveTwoCheckpoints();
	FCorvanePartFile File;
	ASSERT_EQ(open(File).Length, 120'000);
	FCorvaneSourceFacts Huge = factsOf(source);
	Huge.Total = int64(1) << 60;
	EXPECT_EQ(File.StartOver(Huge).Failure, EOutcome::DiskFull);
	File.Close();
	const std::string Journal = Dir.read("file.corvjournal");
	Dir.write("file.corvjournal", bytesOf(FCorvaneJournal::SourceLine(Huge)) + bytesOf(FCorvaneJournal::KeptLine(journal().Kept)));
	EXPECT_EQ(open(File).Result.Failure, EOutcome::DiskFull);
	EXPECT_EQ(open(File).Length, 120'000) << "they are kept";
	Dir.write("file.corvjournal", Journal);
	ASSERT_EQ(open(File).Length, 120'000);
	{
		const FileSizeLimit Limit(205'000);
		EXPECT_TRUE(append(File, source.Bytes.substr(120'000, 70'000)));
		EXPECT_EQ(File.Append(reinterpret_cast<const uint8*>(source.Bytes.data()), 20'000).Failure, EOutcome::CannotWrite);
		EXPECT_EQ(File.GetLength(), 190'000);
		File.Close();
		EXPECT_EQ(open(File).Length, 190'000);
		EXPECT_EQ(File.Append(reinterpret_cast<const uint8*>(source.Bytes.data()), 20'000).Failure, EOutcome::CannotWrite);
	}
	EXPECT_TRUE(append(File, source.Bytes.substr(190'000))) << "what a failed write has left is not in the way";
	EXPECT_TRUE(File.Finish({}).Result.IsOk());
	EXPECT_TRUE(Dir.read("file") == source.Bytes);
	{
		// The disk has room for the journal's first line and no byte more.
		const FileSizeLimit Limit(100);
		ASSERT_TRUE(open(File).Result.IsOk());
		ASSERT_TRUE(File.StartOver(factsOf(source)).IsOk());
		ASSERT_TRUE(append(File, "bytes"));
		EXPECT_EQ(File.Checkpoint().Failure, EOutcome::CannotWrite);
		File.Close();
	}
	EXPECT_EQ(names(), std::set<std::string>{"file"}) << "bytes that nothing vouches for are not kept";
}

TEST_F(PartFile, FinishChecksBeforeItReplaces)
{
	const auto Finish = [this](const char* Hash, bool bMayReplace = true)
	{
		FCorvaneFinishWish Wish;
		EXPECT_TRUE(FCorvaneHashWish::Parse(Hash, Wish.Hash));
		Wish.bMayReplace = bMayReplace;
		Wish.FileTime = FDateTime::FromUnixTimestamp(1'000'000'000);
		return goOn(Wish);
	};
	Dir.write("file", "old");
	leaveTwoCheckpoints();
	EXPECT_EQ(Finish("md5:00000000000000000000000000000000").Result.Failure, EOutcome::WrongHash);
	EXPECT_EQ(names(), std::set<std::string>{"file"}) << "going on would end in the same";
	EXPECT_EQ(Finish("", false).Result.Failure, EOutcome::Refused);
	{
		FCorvanePartFile File;
		ASSERT_EQ(open(File).Length, 200'000);
		FCorvaneFinishWish Wish;
		FCorvaneHashWish::Parse("md5", Wish.Hash);
		File.StopReading();
		EXPECT_EQ(File.Finish(Wish).Result.Failure, EOutcome::Cancelled);
	}
	{
		FCorvanePartFile File;
		EXPECT_EQ(open(File).Length, 200'000);
		EXPECT_TRUE(append(File, "more"));
		EXPECT_EQ(File.Finish({}).Result.Failure, EOutcome::WrongSize);
	}
	EXPECT_EQ(Dir.read("file"), "old");
	fs::resize_file(Dir.path("file.corvpart"), 1);
	const FCorvaneFinished Done = Finish("sha1");
	EXPECT_TRUE(Done.Result.IsOk()) << utf8(Done.Result.Sentence);
	EXPECT_EQ(Done.Hash.Len(), 40);
	EXPECT_EQ(Dir.read("file"), source.Bytes);
	EXPECT_EQ(FPlatformFileManager::Get().GetPlatformFile().GetTimeStamp(*Target), FDateTime::FromUnixTimestamp(1'000'000'000));
	FCorvaneSourceFacts Unknown = factsOf(source);
	Unknown.Total = -1;
	for (const size_t Length : {0u, 5u})
	{
		FCorvanePartFile File;
		begin(File, Length, Unknown);
		EXPECT_TRUE(File.Finish({}).Result.IsOk());
		EXPECT_EQ(Dir.read("file"), source.Bytes.substr(0, Length));
	}
}

TEST_F(PartFile, BytesThatAHandlePutsElsewhereAreNoSuccess)
{
	struct FilesThatErr : ForwardingFiles
	{
		struct Handle : ForwardingHandle
		{
			using ForwardingHandle::ForwardingHandle;
			int64 Size() override { return FMath::Max<int64>(Lower->Size() - 1, 0); }
			bool Seek(int64 Place) override
			{
				return Lower->Seek(Place) && (Place > 0 || Lower->Write(reinterpret_cast<const uint8*>("x"), 1));
			}
		};
		IFileHandle* OpenWrite(const TCHAR* Name, bool bAppend, bool bAllowRead) override
		{
			IFileHandle* const Opened = Lower.OpenWrite(Name, bAppend, bAllowRead);
			return utf8(Name).ends_with(".corvpart") ? new Handle(Opened) : Opened;
		}
	};
	const FilesThatErr Files;
	FCorvanePartFile File;
	begin(File, source.Bytes.size());
	EXPECT_EQ(File.Finish({}).Result.Failure, EOutcome::CannotWrite);
	EXPECT_TRUE(names().empty());
}

TEST_F(PartFile, TheHashIsMadeWhileTheBytesCome)
{
	struct FilesThatCount : ForwardingFiles
	{
		IFileHandle* OpenRead(const TCHAR* Name, bool bAllowWrite) override
		{
			++Reads;
			return Lower.OpenRead(Name, bAllowWrite);
		}
		int Reads = 0;
	};
	FCorvaneFileHash Hash(ECorvaneHashKind::Sha1);
	Hash.Update(reinterpret_cast<const uint8*>(source.Bytes.data()), static_cast<int64>(source.Bytes.size()));
	FCorvaneFinishWish Wish;
	ASSERT_TRUE(FCorvaneHashWish::Parse("sha1:" + Hash.Final(), Wish.Hash));
	FilesThatCount Files;
	FCorvanePartFile File;
	ASSERT_TRUE(File.Open(Target, sourceAddress, true, ECorvaneHashKind::Sha1).Result.IsOk());
	for (const size_t Length : {100'000u, 200'000u}) // it is begun anew
	{
		ASSERT_TRUE(File.StartOver(factsOf(source)).IsOk());
		ASSERT_TRUE(append(File, source.Bytes.substr(0, 1000)));
		ASSERT_TRUE(append(File, source.Bytes.substr(1000, Length - 1000)));
	}
	const FCorvaneFinished Done = File.Finish(Wish);
	EXPECT_TRUE(Done.Result.IsOk()) << utf8(Done.Result.Sentence);
	EXPECT_EQ(Done.Hash, Wish.Hash.Expected);
	EXPECT_EQ(Files.Reads, 0);
}

TEST_F(PartFile, ATargetThatLooksLikeTheNewFileIsNotTakenForIt)
{
	struct FilesThatStay : ForwardingFiles
	{
		bool MoveFile(const TCHAR*, const TCHAR*) override { return false; }
	};
	const std::string Alike = randomBytes(100'000, 1) + source.Bytes.substr(100'000);
	for (const std::string& Old : {std::string("old"), Alike, std::string()}) // the last is none
	{
		Dir.write("file", Old);
		leaveTwoCheckpoints();
		{
			const FilesThatStay Files;
			if (Old.empty())
			{
				fs::remove(Dir.path("file"));
			}
			const FCorvaneFinished Stayed = goOn();
			EXPECT_EQ(Stayed.Result.Failure, EOutcome::CannotWrite);
			EXPECT_EQ(Stayed.KeptBytes, 200'000);
		}
		fs::copy_file(Dir.path("file.corvjournal"), Dir.path("kept"));
		fs::remove(Dir.path("file.corvpart"));
		FCorvanePartFile File;
		EXPECT_FALSE(open(File).bWholeAlready);
		File.Close();
		// With the new file in its place, it is known again, unless nobody could have told it from the old one.
		Dir.write("file", source.Bytes);
		fs::rename(Dir.path("kept"), Dir.path("file.corvjournal"));
		const FCorvaneOpenedPart Opened = open(File);
		EXPECT_EQ(Opened.bWholeAlready, Old != Alike);
		if (Opened.bWholeAlready)
		{
			EXPECT_EQ(Opened.Length, 200'000);
			FCorvaneFinishWish Wish;
			FCorvaneHashWish::Parse("md5", Wish.Hash);
			EXPECT_EQ(File.Finish(Wish).Hash.Len(), 32);
			EXPECT_EQ(names(), std::set<std::string>{"file"});
		}
		File.Discard();
		EXPECT_EQ(Dir.read("file"), source.Bytes);
	}
}

TEST_F(PartFile, ALongOneIsVouchedForBeforeItTakesItsPlace)
{
	struct FilesThatLook : ForwardingFiles
	{
		bool MoveFile(const TCHAR* To, const TCHAR* From) override
		{
			OnMove();
			return Lower.MoveFile(To, From);
		}
		std::function<void()> OnMove;
	};
	const FGameLoop Loop; // whose end waits for the thread that flushes early
	const std::string Long = randomBytes(16 << 20);
	bool bIsKnown = false;
	FilesThatLook Files;
	Files.OnMove = [&] { bIsKnown = journal().bWhole; };
	FCorvanePartFile File;
	begin(File, 0, factsOf({Long, ""}));
	ASSERT_TRUE(append(File, Long));
	EXPECT_TRUE(File.Finish({}).Result.IsOk());
	EXPECT_TRUE(bIsKnown) << "a kill may follow the move";
	EXPECT_TRUE(Dir.read("file") == Long);
}

TEST_F(PartFile, VouchesForBytesWhileTheyCome)
{
	FCorvanePartFile File;
	FCorvaneSourceFacts Facts = factsOf(source);
	Facts.Total = 40 << 20;
	begin(File, 0, Facts);
	const std::string Piece = randomBytes(1000);
	const auto End = std::chrono::steady_clock::now() + std::chrono::duration<double>(patienceSeconds);
	while (journal().Kept.Length == 0 && std::chrono::steady_clock::now() < End)
	{
		ASSERT_TRUE(append(File, Piece));
	}
	EXPECT_GT(journal().Kept.Length, 0);
}
