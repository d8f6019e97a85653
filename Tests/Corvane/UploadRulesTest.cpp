#include "ModuleFixture.h"
#include "Rules/Multipart.h"
#include "Rules/UploadTail.h"

TEST(UploadRules, EveryTailThatIsWrittenIsFound)
{
	for (int64 size = 1; size < int64(1) << 45; size += size / 8 + 1)
	{
		const std::string tail = utf8(CorvaneRules::closingDelimiter(CorvaneRules::boundaryToken(size)));
		const std::string file = std::string(47, 'x') + tail;
		const std::string end = file.substr(file.size() - CorvaneRules::longestUploadTail);
		const int64 found = CorvaneRules::sizeBeforeUpload(
			reinterpret_cast<const uint8*>(end.data()), CorvaneRules::longestUploadTail, size + static_cast<int64>(tail.size()));
		EXPECT_EQ(found, size);
	}
}

TEST(UploadRules, CopiesLieWhereTheNameIsReplaced)
{
	for (const auto& [path, copy] : {std::pair("/data/report.txt", "/data/report_UEUploadCopy_G.txt"),
			 {"/d/a.tar.gz", "/d/a.tar_UEUploadCopy_G.gz"}, {"/d/noext", "/d/noext_UEUploadCopy_G."}, {"/d/.env", "/d/_UEUploadCopy_G.env"},
			 {"/A.TXT/x/a.txt", "/a_UEUploadCopy_G.txt/x/a_UEUploadCopy_G.txt"}})
	{
		EXPECT_EQ(utf8(CorvaneRules::uploadCopyPath(path, "G")), copy);
	}
}
