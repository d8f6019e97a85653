#include "NearestName.h"

#include <gtest/gtest.h>

TEST(NearestName, IsTheOneThatWasMeantOrNone)
{
	const std::vector<std::string> names = {"fileSize", "fileExists", "splitFile", "url", "urlEncode", "E_gd"};
	const std::pair<const char*, const char*> cases[] = {{"fielSize", "fileSize"}, {"FILESISE", "fileSize"}, {"fileExist", "fileExists"},
		{"uri", "url"}, {"E_dg", "E_gd"}, {"Encode", "urlEncode"}, {"split", "splitFile"}, {"E", ""}, {"header", ""}, {"", ""}};
	for (const auto& [name, meant] : cases)
	{
		EXPECT_EQ(Reflect::nearestName(name, names), meant) << name;
	}
	EXPECT_EQ(Reflect::suggestion("uri", names), ", did you mean 'url'?");
}
