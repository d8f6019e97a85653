#include "Containers/StringConv.h"
#include "Host/Directories.h"
#include "Misc/Paths.h"

#include <gtest/gtest.h>

TEST(Paths, BecomeAbsoluteAndClean)
{
	HostDirectories::Set("../Project", "/base/bin");
	struct FCase
	{
		const char* Path;
		const char* Full;
	};
	const FCase Cases[] = {
		{"Content/a.txt", "/base/bin/Content/a.txt"},
		{"/abs//x/./y/../z", "/abs/x/z"},
		{"a\\b", "/base/bin/a/b"},
		{"", "/base/bin/"},
		{"../Project/Content", "/base/Project/Content"},
		{"/../..", "/"},
		{"ü/ß", "/base/bin/ü/ß"},
	};
	for (const FCase& Case : Cases)
	{
		const FUTF8ToTCHAR Units(Case.Path, static_cast<int32>(std::char_traits<char>::length(Case.Path)));
		const FString Full = FPaths::ConvertRelativePathToFull(FString(Units.Get()));
		EXPECT_STREQ(FTCHARToUTF8(*Full).Get(), Case.Full) << Case.Path;
	}
	EXPECT_STREQ(FTCHARToUTF8(*FPaths::ProjectDir()).Get(), "../Project/");
}
