#include "ModuleFixture.h"
#include "Rules/Multipart.h"
#include "Rules/UploadTail.h"

namespace
{
	constexpr int64 unchanged = -1;

	int64 sizeFound(const std::string& tail, int64 fileSize)
	{
		return CorvaneRules::sizeBeforeUpload(reinterpret_cast<const uint8*>(tail.data()), static_cast<int32>(tail.size()), fileSize);
	}

	/** The end of a file as the search sees it. */
	std::string lastBytes(const std::string& file)
	{
		const size_t most = CorvaneRules::longestUploadTail;
		return file.size() > most ? file.substr(file.size() - most) : file;
	}

	std::string tailOf(const std::string& number)
	{
		return "\r\n------UE4CorvanePlugin_" + number + "--\r\n";
	}

	FhttpRequest record(EHTTPCorvRequestType type, const char* path, int64 size)
	{
		FhttpRequest made;
		made.requestType = type;
		made.filePath = text(path);
		made.originalFileSize = size;
		return made;
	}
} // namespace

TEST(UploadRules, NamesCannotLeaveTheirQuotes)
{
	struct Case
	{
		const char* name;
		const char* safe;
	};
	for (const Case& c : {Case{"plain.txt", "plain.txt"}, {"", ""}, {"a\"b", "a%22b"}, {"\r\nX: \"1\"\r\n", "%0D%0AX: %221%22%0D%0A"},
			 {"100%22 ü;\\'", "100%22 ü;\\'"}})
	{
		EXPECT_EQ(utf8(CorvaneRules::safeName(text(c.name))), c.safe);
	}
}

TEST(UploadRules, BoundaryNumbersAreTheLowerHalfWithItsSign)
{
	for (const auto& [number, token] : std::initializer_list<std::pair<int64, const char*>>{{0, "UE4CorvanePlugin_0"},
			 {1000, "UE4CorvanePlugin_1000"}, {3'000'000'000, "UE4CorvanePlugin_-1294967296"}, {4'294'968'296, "UE4CorvanePlugin_1000"},
			 {5'000'000'000, "UE4CorvanePlugin_705032704"}, {INT64_MAX, "UE4CorvanePlugin_-1"}})
	{
		EXPECT_EQ(utf8(CorvaneRules::boundaryToken(number)), token);
	}
}

TEST(UploadRules, StreamLengthsCountUnitsBehindTheReplacement)
{
	struct Case
	{
		const char *field, *file, *mimeType;
		const char* number;
		size_t headUnits;
	};
	for (const Case& c : {Case{"f", "a.bin", "application/octet-stream", "1150", 117}, {"myFile", "ü.png", "image/png", "1140", 107},
			 {"f\"", "a\r\n", "m", "1132", 99}})
	{
		const FString token = CorvaneRules::boundaryToken(1000);
		const std::string value = utf8(CorvaneRules::streamLengthHeader(token, text(c.field), text(c.file), c.mimeType, 1000));
		EXPECT_EQ(value.substr(0, value.find('\r')), c.number);
		EXPECT_EQ(text(value.substr(value.find('\r'))).Len(), static_cast<int32>(c.headUnits));
		EXPECT_EQ(CorvaneRules::closingDelimiter(token).Len(), 33);
	}
}

TEST(UploadRules, TailsTellTheSizeOfTheFile)
{
	const std::string thousand(1000, 'x');
	struct Case
	{
		std::string file;
		int64 found;
	};
	const Case cases[] = {
		{thousand + tailOf("1000"), 1000},
		{"x" + tailOf("1"), 1},
		{"12" + tailOf("7"), 7}, // as it says, though the file was never so long
		{thousand + tailOf("900"), 900},
		{thousand + tailOf("1000").substr(2), 1000}, // the line break in front is not looked at
		{thousand + "\r\n------UE4CorvanePlugin_1000--", 1000},
		{thousand + "\r\n------UE4CorvanePlugin_1000-- \t\r\n\n", 1000},
		{tailOf("0"), 0},
		{tailOf("0").substr(2), 0}, // the shortest there can be
		{tailOf("5").substr(3), unchanged},
		{thousand + tailOf(""), unchanged},
		{thousand + tailOf("-"), unchanged},
		{thousand + tailOf("-24"), unchanged},
		{thousand + tailOf("1e3"), unchanged},
		{thousand + tailOf("+1000"), unchanged},
		{thousand + tailOf("10.0"), unchanged},
		{thousand + tailOf("123456789012345678"), 123456789012345678},
		{thousand + tailOf("09223372036854775807"), 9223372036854775807},
		{thousand + tailOf("9223372036854775808"), unchanged},
		{thousand + tailOf("1000") + "x", unchanged},
		{thousand + "\r\n------ue4corvaneplugin_1000--\r\n", unchanged},
		{thousand + "\r\n------UE4CorvanePlugin_1000-\r\n", unchanged},
		{thousand + "\r\n------AnotherBoundary_1000--\r\n", unchanged},
		{thousand, unchanged},
		{std::string(1000, '-'), unchanged},
		{"", unchanged},
	};
	for (const Case& c : cases)
	{
		EXPECT_EQ(sizeFound(lastBytes(c.file), static_cast<int64>(c.file.size())), c.found) << c.file.substr(c.file.size() / 2);
	}
}

TEST(UploadRules, TailsOfLargeFilesAreCompletedByTheirSize)
{
	struct Case
	{
		int64 size;
		const char* number;
		int64 appended; // further bytes, that the tail does not know of
		int64 found;
	};
	const Case cases[] = {
		{2'147'483'647, "2147483647", 0, 2'147'483'647},
		{2'147'483'648, "-2147483648", 0, 2'147'483'648},
		{3'000'000'000, "-1294967296", 0, 3'000'000'000},
		{4'294'967'296, "0", 0, 4'294'967'296},
		{4'294'968'296, "1000", 0, 4'294'968'296},
		{5'000'000'000, "705032704", 0, 5'000'000'000},
		{5'000'000'000, "705032704", 1, unchanged},
		{3'000'000'000, "-1294967296", -1, unchanged},
		{3'000'000'000, "1000", 0, unchanged},
	};
	for (const Case& c : cases)
	{
		const std::string tail = tailOf(c.number);
		EXPECT_EQ(sizeFound(lastBytes("xxxxxxxxxxxxxxxxxxxx" + tail), c.size + static_cast<int64>(tail.size()) + c.appended), c.found)
			<< c.size;
	}
}

TEST(UploadRules, EveryTailThatIsWrittenIsFound)
{
	for (int64 size = 1; size < int64(1) << 45; size += size / 8 + 1)
	{
		const std::string tail = utf8(CorvaneRules::closingDelimiter(CorvaneRules::boundaryToken(size)));
		EXPECT_EQ(sizeFound(lastBytes(std::string(20, 'x') + tail), size + static_cast<int64>(tail.size())), size);
	}
}

TEST(UploadRules, CopiesLieWhereTheNameIsReplaced)
{
	struct Case
	{
		const char *path, *copy;
	};
	for (const Case& c : {Case{"/data/report.txt", "/data/report_UEUploadCopy_G.txt"}, {"/d/a.tar.gz", "/d/a.tar_UEUploadCopy_G.gz"},
			 {"/d/noext", "/d/noext_UEUploadCopy_G."}, {"/d/.env", "/d/_UEUploadCopy_G.env"},
			 {"/A.TXT/x/a.txt", "/a_UEUploadCopy_G.txt/x/a_UEUploadCopy_G.txt"}})
	{
		EXPECT_EQ(utf8(CorvaneRules::uploadCopyPath(c.path, "G")), c.copy);
	}
}

TEST(UploadRules, OnlyAFileThatWasChangedNeedsRepair)
{
	using Type = EHTTPCorvRequestType;
	EXPECT_TRUE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_MP, "/d/a", 1)));
	EXPECT_FALSE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_MP, "/d/a", 0)));
	EXPECT_FALSE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_MP, "", 1)));
	EXPECT_TRUE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_COPY, "/d/a_UEUploadCopy_G.x", 0)));
	EXPECT_FALSE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_COPY, "/d/a", 5))) << "that is the user's own file";
	EXPECT_FALSE(CorvaneRules::needsRepair(record(Type::PUT_STREAM_COPY, "/d_UEUploadCopy_/a", 5)));
	for (const Type type : {Type::GET, Type::PUT, Type::PUT_STREAM_BLANK, Type::POST_UPLOAD})
	{
		EXPECT_FALSE(CorvaneRules::needsRepair(record(type, "/d/a_UEUploadCopy_G.x", 5)));
	}
}
