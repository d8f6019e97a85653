#include "FileKit.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
	class SplitFile : public testing::Test
	{
	protected:
		/** Splits and keeps the outputs for the next call. */
		bool split(const std::string& path, int32 parts)
		{
			bool success = !succeeds;
			UFileFunctionsCorv::splitFile(success, paths, sizes, EKind::E_ad, text(path), parts);
			succeeds = success;
			return success;
		}

		/** @return the paths, without the temporary directory. */
		std::vector<std::string> names() const
		{
			std::vector<std::string> list;
			for (const FString& path : paths)
			{
				list.push_back(utf8(path).substr(dir.path().size() + 1));
			}
			return list;
		}

		std::vector<int64> tellSizes() const { return std::vector<int64>(sizes.begin(), sizes.end()); }

		/** @return the bytes of all parts, one behind the other. */
		std::string joined() const
		{
			std::string bytes;
			for (const std::string& name : names())
			{
				bytes += dir.read(name);
			}
			return bytes;
		}

		const TempDir dir;
		TArray<FString> paths;
		TArray<int64> sizes;
		bool succeeds = false;
	};
} // namespace

TEST_F(SplitFile, TheLastPartTakesTheRest)
{
	const std::string path = dir.write("movie.mp4", "0123456789");
	EXPECT_TRUE(split(path, 3));
	EXPECT_THAT(names(), ElementsAre("movie_0.mp4", "movie_1.mp4", "movie_2.mp4"));
	EXPECT_THAT(tellSizes(), ElementsAre(3, 3)) << "the last part's size is not told";
	EXPECT_EQ(dir.read("movie_0.mp4") + "|" + dir.read("movie_1.mp4") + "|" + dir.read("movie_2.mp4"), "012|345|6789");
	EXPECT_EQ(dir.read("movie.mp4"), "0123456789");
}

TEST_F(SplitFile, OutputsAreAppendedToAndPartsReplaced)
{
	const std::string path = dir.write("a.b.c", "abcdef");
	dir.write("a.b_0.c", "an older and longer part");
	std::filesystem::create_hard_link(path, dir.path("a.b_1.c"));
	EXPECT_TRUE(split(path, 2));
	EXPECT_TRUE(split(path, 3));
	EXPECT_THAT(names(), ElementsAre("a.b_0.c", "a.b_1.c", "a.b_0.c", "a.b_1.c", "a.b_2.c"));
	EXPECT_THAT(tellSizes(), ElementsAre(3, 2, 2));
	EXPECT_EQ(dir.read("a.b_0.c"), "ab");
	EXPECT_EQ(dir.read("a.b.c"), "abcdef") << "written through a link";
}

TEST_F(SplitFile, FewerThanOnePartIsOne)
{
	const std::string path = dir.write("n\u00e4me", "ab");
	for (const int32 parts : {1, 0, -1, INT32_MIN})
	{
		paths.Empty();
		EXPECT_TRUE(split(path, parts)) << parts;
		EXPECT_THAT(names(), ElementsAre("n\u00e4me_0"));
		EXPECT_THAT(tellSizes(), IsEmpty());
		EXPECT_EQ(joined(), "ab");
	}
}

TEST_F(SplitFile, PartsJoinedAreTheFile)
{
	for (const size_t size : {8u, 7167u, 7168u, 7169u, 65'535u, 65'536u, 65'537u, 458'751u, 458'752u, 458'753u, 1'000'000u})
	{
		const std::string bytes = randomBytes(size);
		paths.Empty();
		sizes.Empty();
		EXPECT_TRUE(split(dir.write("movie.mp4", bytes), 7)) << size;
		EXPECT_TRUE(joined() == bytes) << size;
		EXPECT_TRUE(dir.read("movie.mp4") == bytes) << size;
	}
}

TEST_F(SplitFile, AgreesWithTheSystemsOwnProgram)
{
	dir.write("movie.mp4", randomBytes(8 * 70'001));
	EXPECT_TRUE(split(dir.path("movie.mp4"), 8));
	outputOf("cd '" + dir.path() + "' && split -n 8 -a 1 -d movie.mp4 other_");
	for (int part = 0; part < 8; ++part)
	{
		EXPECT_TRUE(dir.read("movie_" + std::to_string(part) + ".mp4") == dir.read("other_" + std::to_string(part))) << part;
	}
}

TEST_F(SplitFile, WhatCannotBeSplitChangesNothing)
{
	const std::pair<std::string, int32> cases[] = {
		{dir.write("three", "abc"), 3}, // as many parts as bytes
		{dir.path("three"), MAX_int32},
		{dir.write("empty", ""), 1},
		{dir.write("one", "a"), 1},
		{dir.write(".env", "secrets"), 2}, // no base name: a part would be the file itself
		{dir.path("missing"), 2},
		{dir.path(), 2},
		{dir.path("three/"), 2},
		{dir.path(std::string(250, 'x') + "/below"), 2},
		{"", 2},
	};
	for (const auto& [path, parts] : cases)
	{
		EXPECT_FALSE(split(path, parts)) << path;
		EXPECT_TRUE(paths.IsEmpty() && sizes.IsEmpty()) << path;
	}
	EXPECT_EQ(dir.read(".env"), "secrets");
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 4) << "no part was written";
}

TEST_F(SplitFile, TheNameIsReplacedInDirectoriesToo)
{
	const std::string path = dir.write("MyDATA/data.bin", "abcd");
	EXPECT_FALSE(split(path, 2)) << "its part strays into a directory that is not there";
	EXPECT_THAT(names(), ElementsAre("Mydata_0/data_0.bin"));
	EXPECT_THAT(tellSizes(), ElementsAre(2));
	EXPECT_FALSE(dir.exists("Mydata_0"));
	std::filesystem::create_directory(dir.path("Mydata_0"));
	std::filesystem::create_directory(dir.path("Mydata_1"));
	paths.Empty();
	EXPECT_TRUE(split(path, 2));
	EXPECT_THAT(names(), ElementsAre("Mydata_0/data_0.bin", "Mydata_1/data_1.bin"));
	EXPECT_EQ(joined(), "abcd");
}

TEST_F(SplitFile, StopsAtThePartThatCannotBeWritten)
{
	const std::string path = dir.write("film.bin", "abcdef");
	dir.write("film_1.bin", "protected");
	std::filesystem::permissions(dir.path("film_1.bin"), std::filesystem::perms::owner_read);
	EXPECT_FALSE(split(path, 3));
	EXPECT_THAT(names(), ElementsAre("film_0.bin", "film_1.bin")) << "the failed part is told, later ones are not";
	EXPECT_THAT(tellSizes(), ElementsAre(2, 2));
	EXPECT_EQ(dir.read("film_0.bin") + dir.read("film_1.bin") + dir.read("film.bin"), "abprotectedabcdef");
	EXPECT_FALSE(dir.exists("film_2.bin"));

	std::filesystem::resize_file(path, 4'400'000'000); // a part may be larger than an array; writing one would take too long here
	std::filesystem::remove(dir.path("film_0.bin"));
	std::filesystem::create_symlink("/dev/full", dir.path("film_0.bin"));
	paths.Empty();
	sizes.Empty();
	EXPECT_FALSE(split(path, 2));
	EXPECT_THAT(names(), ElementsAre("film_0.bin"));
	EXPECT_THAT(tellSizes(), ElementsAre(2'200'000'000));
}

TEST_F(SplitFile, AFullDiskIsAFailure)
{
	const std::string bytes = randomBytes(3002);
	const std::string path = dir.write("film.bin", bytes);
	{
		const FileSizeLimit limit(1000); // enough for all parts but the last
		EXPECT_FALSE(split(path, 3));
	}
	EXPECT_THAT(names(), ElementsAre("film_0.bin", "film_1.bin", "film_2.bin"));
	EXPECT_THAT(tellSizes(), ElementsAre(1000, 1000));
	EXPECT_TRUE(dir.read("film_0.bin") + dir.read("film_1.bin") == bytes.substr(0, 2000));
	EXPECT_TRUE(dir.read("film.bin") == bytes);
}

TEST_F(SplitFile, ReadsTheKindOfPathAndTwoPartsByDefault)
{
	bool success = false;
	UFileFunctionsCorv::splitFile(success, paths, sizes, EKind::E_ad, text(dir.write("film", "abcd")));
	EXPECT_TRUE(success);
	EXPECT_THAT(names(), ElementsAre("film_0", "film_1"));
}
