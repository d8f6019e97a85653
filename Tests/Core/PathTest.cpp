#include "Misc/Paths.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(Paths, FallIntoParts)
{
	const char* const Cases[][5] = {
		// path, directory, name, name without extension, extension
		{"/a/b.c/d.tar.gz", "/a/b.c", "d.tar.gz", "d.tar", "gz"},
		{"C:\\a\\b.txt", "C:\\a", "b.txt", "b", "txt"},
		{"/a.b/c", "/a.b", "c", "c", ""},
		{"/a/.env", "/a", ".env", "", "env"},
		{"/a/ends.", "/a", "ends.", "ends", ""},
		{"/a.txt", "", "a.txt", "a", "txt"},
		{"/a/b/", "/a/b", "", "", ""},
		{"plain", "", "plain", "plain", ""},
	};
	for (const auto& [Path, Directory, Name, Base, Extension] : Cases)
	{
		EXPECT_EQ(utf8(FPaths::GetPath(Path)), Directory) << Path;
		EXPECT_EQ(utf8(FPaths::GetCleanFilename(Path)), Name) << Path;
		EXPECT_EQ(utf8(FPaths::GetBaseFilename(Path)), Base) << Path;
		EXPECT_EQ(utf8(FPaths::GetExtension(Path)), Extension) << Path;
	}
	EXPECT_EQ(utf8(FPaths::GetBaseFilename("/a.b/c.d", false)), "/a.b/c");
	EXPECT_EQ(utf8(FPaths::GetExtension("/a.b/c.d", true)), ".d");
}
