#include "FileKit.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"
#include "TempDir.h"

using Files = UFileFunctionsCorv;

namespace
{
	struct Encoded
	{
		bool success = true;
		FString base64 = "old";
		FString fileName = "old";
	};

	Encoded encodeFile(const std::string& path)
	{
		Encoded result;
		Files::fileToBase64String(EKind::E_ad, text(path), result.success, result.base64, result.fileName);
		return result;
	}

	std::string md5(const std::string& path, bool& success)
	{
		FString digest("old");
		Files::getMD5FromFile(EKind::E_ad, text(path), success, digest);
		return utf8(digest);
	}
} // namespace

TEST(FileEncoding, AgreesWithTheSystemsOwnPrograms)
{
	const TempDir dir;
	for (const size_t number : {0u, 1u, 2u, 3u, 1023u, 1024u, 1025u, 1500u, 2047u, 2048u, 2049u, 65'536u, 100'001u})
	{
		const std::string bytes = randomBytes(number);
		const std::string path = dir.write("n\u00e4me.tar.gz", bytes);
		bool success = false;
		EXPECT_EQ(md5(path, success), outputOf("md5sum < '" + path + "'").substr(0, 32)) << number;
		EXPECT_TRUE(success);
		const Encoded encoded = encodeFile(path);
		EXPECT_TRUE(encoded.success);
		EXPECT_EQ(utf8(encoded.fileName), "n\u00e4me.tar.gz");
		EXPECT_TRUE(utf8(encoded.base64) == outputOf("base64 -w0 '" + path + "'")) << number;
		EXPECT_TRUE(toBytes(Files::base64StringToBytes(EKind::E_gd, encoded.base64, success)) == bytes && success) << number;
	}
}

TEST(FileEncoding, FilesThatCannotBeReadGiveNothing)
{
	const TempDir dir;
	dir.write("file", "x");
	for (const std::string& path : {dir.path("missing"), dir.path(), dir.path("file/"), dir.path(std::string(256, 'x')), std::string()})
	{
		bool success = true;
		EXPECT_EQ(md5(path, success), "") << path;
		EXPECT_FALSE(success) << path;
		const Encoded encoded = encodeFile(path);
		EXPECT_TRUE(!encoded.success && encoded.base64.IsEmpty()) << path;
		EXPECT_EQ(utf8(encoded.fileName), "old") << path;
	}
}

TEST(FileEncoding, AFileThatNoTextCanShowIsAFailure)
{
	const TempDir dir;
	const std::string path = dir.write("sparse", "");
	std::filesystem::resize_file(path, 1'610'612'734);
	EXPECT_FALSE(encodeFile(path).success);
}

TEST(FileEncoding, TextTravelsAsUtf8)
{
	const std::pair<std::string, const char*> cases[] = {
		{"", ""}, {"hello", "aGVsbG8="}, {"\u00fc\u20ac", "w7zigqw="}, {std::string("a\0b", 3), "YQBi"}, {"\U0001F600", "8J+YgA=="}};
	for (const auto& [plain, base64] : cases)
	{
		FString encoded("old");
		Files::stringToBase64String(text(plain), encoded);
		EXPECT_EQ(utf8(encoded), base64);
		FString decoded("old");
		Files::base64StringToString(decoded, base64);
		EXPECT_EQ(utf8(decoded), plain);
		FString fromBytes("old");
		Files::bytesToBase64String(toArray(plain), fromBytes);
		EXPECT_EQ(utf8(fromBytes), base64);
	}
	FString same("hello");
	Files::stringToBase64String(same, same);
	Files::base64StringToString(same, same);
	EXPECT_EQ(utf8(same), "hello") << "a text may be given and taken at once";
	Files::base64StringToString(same, "/8Oo");
	EXPECT_EQ(utf8(same), "\uFFFD\u00e8") << "bytes that are no text";
}

TEST(FileEncoding, DamagedBase64GivesNothing)
{
	for (const char* damaged : {"A", "aGVsbGVsb", "aGVsbG8=\n", "aGVs bG8=", "aGVsbG8?", "aG=sbG8=", "aGVsbG8\xE9"})
	{
		bool success = true;
		EXPECT_TRUE(Files::base64StringToBytes(EKind::E_ad, damaged, success).IsEmpty()) << damaged;
		EXPECT_FALSE(success) << damaged;
		FString decoded("old");
		Files::base64StringToString(decoded, damaged);
		EXPECT_TRUE(decoded.IsEmpty()) << damaged;
	}
}
