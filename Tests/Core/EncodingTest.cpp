#include "Misc/Base64.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(Base64, TellsDamagedText)
{
	TArray<uint8> Bytes;
	for (const char* Text : {"AAAAA", "A===", "aGVs bG8=", "aGVsbG8=\n", "\taGVs", "aG=sbG8=", "aGVsbG8-", "aGVsbG8_", "aGVsbG8\x01"})
	{
		EXPECT_FALSE(FBase64::Decode(Text, Bytes)) << Text;
	}
	EXPECT_FALSE(FBase64::Decode(u"aGVsbG\u0138=", Bytes)) << "its low byte alone would be a digit";
	EXPECT_TRUE(FBase64::Decode("aGVsbG8", Bytes)) << "padding may be missing";
	EXPECT_EQ(bytesOf(Bytes), "hello");
}
