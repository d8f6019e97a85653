#include "Misc/Paths.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(Paths, FallIntoParts)
{
	struct FCase
	{
		const char* Path;
		const char* Directory;
		const char* Name;
		const char* Base;
		const char* Extension;
	};
	const FCase Cases[] = {
		{"/a/b.c/d.tar.gz", "/a/b.c", "d.tar.gz", "d.tar", "gz"},
		{"C:\\a\\b.txt", "C:\\a", "b.txt", "b", "txt"},
		{"/a.b/c", "/a.b", "c", "c", ""},
		{"/a/.env", "/a", ".env", "", "env"},
		{"/a/ends.", "/a", "ends.", "ends", ""},
		{"/a.txt", "", "a.txt", "a", "txt"},
		{"/a/b/", "/a/b", "", "", ""},
		{"plain", "", "plain", "plain", ""},
		{"", "", "", "", ""},
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(utf8(FPaths::GetPath(Case.Path)), Case.Directory) << Case.Path;
		EXPECT_EQ(utf8(FPaths::GetCleanFilename(Case.Path)), Case.Name) << Case.Path;
		EXPECT_EQ(utf8(FPaths::GetBaseFilename(Case.Path)), Case.Base) << Case.Path;
		EXPECT_EQ(utf8(FPaths::GetExtension(Case.Path)), Case.Extension) << Case.Path;
	}
	EXPECT_EQ(utf8(FPaths::GetBaseFilename("/a.b/c.d", false)), "/a.b/c");
	EXPECT_EQ(utf8(FPaths::GetExtension("/a.b/c.d", true)), ".d");
}
