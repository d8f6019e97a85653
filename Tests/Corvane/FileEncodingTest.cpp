#include "FileKit.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"

namespace
{
	class FileEncoding : public FileTest
	{
	protected:
		/** @return the base64 text of a file with the name that is told of it; a failure leaves the name as it was. */
		static std::string encodeFile(const std::string& path)
		{
			bool success = true;
			FString base64 = "old", fileName = "old";
			Files::fileToBase64String(EKind::E_ad, text(path), success, base64, fileName);
			return (success ? "" : "failed ") + utf8(fileName) + ": " + utf8(base64);
		}
	};
} // namespace

TEST_F(FileEncoding, AgreesWithTheSystemsOwnPrograms)
{
	for (const size_t number : {0u, 1u, 2u, 3u, 1023u, 1024u, 1025u, 1500u, 2047u, 2048u, 2049u, 65'536u, 100'001u})
	{
		const std::string bytes = randomBytes(number);
		const std::string path = dir.write("n\u00e4me.tar.gz", bytes);
		EXPECT_EQ(md5(path), outputOf("md5sum < '" + path + "'").substr(0, 32)) << number;
		const std::string base64 = outputOf("base64 -w0 '" + path + "'");
		EXPECT_TRUE(encodeFile(path) == "n\u00e4me.tar.gz: " + base64) << number;
		bool success = false;
		EXPECT_TRUE(bytesOf(Files::base64StringToBytes(EKind::E_gd, text(base64), success)) == bytes && success) << number;
	}
}

TEST_F(FileEncoding, FilesThatCannotBeReadGiveNothing)
{
	std::vector<std::string> paths = noFiles();
	paths.push_back(dir.path("missing"));
	for (const std::string& path : paths)
	{
		EXPECT_FALSE(md5(path)) << path;
		EXPECT_EQ(encodeFile(path), "failed old: ") << path;
	}
	std::filesystem::resize_file(file, 1'610'612'734);
	EXPECT_EQ(encodeFile(file).substr(0, 6), "failed") << "no text can show so much";
}

TEST_F(FileEncoding, TextTravelsAsUtf8)
{
	const std::pair<std::string, const char*> cases[] = {
		{"", ""}, {"hello", "aGVsbG8="}, {"\u00fc\u20ac", "w7zigqw="}, {std::string("a\0b", 3), "YQBi"}, {"\U0001F600", "8J+YgA=="}};
	for (const auto& [plain, base64] : cases)
	{
		FString encoded = "old", decoded = "old", fromBytes = "old";
		Files::stringToBase64String(text(plain), encoded);
		Files::base64StringToString(decoded, base64);
		Files::bytesToBase64String(toArray(plain), fromBytes);
		EXPECT_EQ(utf8(encoded), base64);
		EXPECT_EQ(utf8(decoded), plain);
		EXPECT_EQ(utf8(fromBytes), base64);
	}
	FString same("hello");
	Files::stringToBase64String(same, same);
	Files::base64StringToString(same, same);
	EXPECT_EQ(utf8(same), "hello") << "a text may be given and taken at once";
	Files::base64StringToString(same, "/8Oo");
	EXPECT_EQ(utf8(same), "\uFFFD\u00e8") << "bytes that are no text";
}

TEST_F(FileEncoding, DamagedBase64GivesNothing)
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
