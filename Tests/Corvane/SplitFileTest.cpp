#include "FileKit.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"

namespace
{
	class SplitFile : public FileTest
	{
	protected:
		/** Splits with new outputs. @return what they are, as one text. */
		std::string split(const std::string& path, int32 parts)
		{
			paths.Empty();
			sizes.Empty();
			return splitOn(path, parts);
		}

		/** Splits with the outputs of the call before. @return "yes" or "no", the names of the parts, and their sizes. */
		std::string splitOn(const std::string& path, int32 parts)
		{
			succeeds = !succeeds;
			UFileFunctionsCorv::splitFile(succeeds, paths, sizes, EKind::E_ad, text(path), parts);
			std::string told = succeeds ? "yes" : "no";
			for (const FString& part : paths)
			{
				told += " " + utf8(part).substr(dir.path().size() + 1);
			}
			for (const int64 size : sizes)
			{
				told += " " + std::to_string(size);
			}
			return told;
		}

		/** @return the bytes of all parts, one after the other. */
		std::string joined() const
		{
			std::string bytes;
			for (const FString& part : paths)
			{
				bytes += dir.read(utf8(part));
			}
			return bytes;
		}

		TArray<FString> paths;
		TArray<int64> sizes;
		bool succeeds = false;
	};
} // namespace

TEST_F(SplitFile, TheLastPartTakesTheRestAndTellsNoSize)
{
	EXPECT_EQ(split(dir.write("movie.mp4", "0123456789"), 3), "yes movie_0.mp4 movie_1.mp4 movie_2.mp4 3 3");
	EXPECT_EQ(dir.read("movie_0.mp4") + "|" + dir.read("movie_1.mp4") + "|" + dir.read("movie_2.mp4"), "012|345|6789");
	EXPECT_EQ(dir.read("movie.mp4"), "0123456789");
	for (const int32 parts : {1, 0, -1, INT32_MIN})
	{
		EXPECT_EQ(split(dir.write("n\u00e4me", "ab"), parts), "yes n\u00e4me_0") << parts;
		EXPECT_EQ(joined(), "ab");
	}
	paths.Empty();
	UFileFunctionsCorv::splitFile(succeeds, paths, sizes, EKind::E_ad, text(dir.path("movie.mp4")));
	EXPECT_EQ(paths.Num(), 2) << "by default";
}

TEST_F(SplitFile, OutputsAreAppendedToAndPartsReplaced)
{
	const std::string path = dir.write("a.b.c", "abcdef");
	dir.write("a.b_0.c", "an older and longer part");
	std::filesystem::create_hard_link(path, dir.path("a.b_1.c"));
	splitOn(path, 2);
	EXPECT_EQ(splitOn(path, 3), "yes a.b_0.c a.b_1.c a.b_0.c a.b_1.c a.b_2.c 3 2 2");
	EXPECT_EQ(dir.read("a.b_0.c"), "ab");
	EXPECT_EQ(dir.read("a.b.c"), "abcdef") << "written through a link";
}

TEST_F(SplitFile, PartsJoinedAreTheFile)
{
	for (const size_t size : {8u, 7167u, 7168u, 7169u, 65'535u, 65'536u, 65'537u, 458'751u, 458'752u, 458'753u, 1'000'000u})
	{
		const std::string bytes = randomBytes(size);
		EXPECT_EQ(split(dir.write("movie.mp4", bytes), 7).substr(0, 4), "yes ") << size;
		EXPECT_TRUE(joined() == bytes) << size;
		EXPECT_TRUE(dir.read("movie.mp4") == bytes) << size;
	}
}

TEST_F(SplitFile, WhatCannotBeSplitChangesNothing)
{
	const std::pair<std::string, int32> cases[] = {
		{dir.write("three", "abc"), 3}, // as many parts as bytes
		{dir.path("three"), MAX_int32},
		{dir.write("empty", ""), 1},
		{file, 1}, // one byte
		{dir.write(".env", "secrets"), 2}, // no base name: a part would be the file itself
		{dir.path("missing"), 2},
		{dir.path(std::string(250, 'x') + "/below"), 2},
	};
	for (const auto& [path, parts] : cases)
	{
		EXPECT_EQ(split(path, parts), "no") << path;
	}
	for (const std::string& path : noFiles())
	{
		EXPECT_EQ(split(path, 2), "no") << path;
	}
	EXPECT_EQ(dir.read(".env"), "secrets");
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 4) << "no part was written";
}

TEST_F(SplitFile, TheNameIsReplacedInDirectoriesToo)
{
	const std::string path = dir.write("MyDATA/data.bin", "abcd");
	EXPECT_EQ(split(path, 2), "no Mydata_0/data_0.bin 2") << "its part strays into a directory that is not there";
	EXPECT_FALSE(dir.exists("Mydata_0"));
	std::filesystem::create_directory(dir.path("Mydata_0"));
	std::filesystem::create_directory(dir.path("Mydata_1"));
	EXPECT_EQ(split(path, 2), "yes Mydata_0/data_0.bin Mydata_1/data_1.bin 2");
	EXPECT_EQ(joined(), "abcd");
}

TEST_F(SplitFile, StopsAtThePartThatCannotBeWritten)
{
	const std::string path = dir.write("film.bin", "abcdef");
	std::filesystem::permissions(dir.write("film_1.bin", "protected"), std::filesystem::perms::owner_read);
	EXPECT_EQ(split(path, 3), "no film_0.bin film_1.bin 2 2") << "the failed part is told, later ones are not";
	EXPECT_EQ(dir.read("film_0.bin") + dir.read("film_1.bin") + dir.read("film.bin"), "abprotectedabcdef");
	EXPECT_FALSE(dir.exists("film_2.bin"));

	std::filesystem::remove(dir.path("film_0.bin"));
	std::filesystem::create_symlink("/dev/full", dir.path("film_0.bin"));
	EXPECT_EQ(split(path, 2), "no film_0.bin 3");
	std::filesystem::resize_file(path, 4'400'000'000); // a part may be larger than an array; writing one would take too long here
	EXPECT_EQ(split(path, 2), "no film_0.bin 2200000000");
}
