#include "ModuleFixture.h"
#include "Rules/MimeRows.h"
#include "TempDir.h"

#include <map>

namespace
{
	std::string type(const char* extension)
	{
		return utf8(UCorvaneBPLibrary::getCorvaneTarget()->getMimeTypeInternal(extension));
	}

	/** @return the type of a file on disk; "-" = not found. */
	std::string typeOfFile(const std::string& path)
	{
		FString mimeType = "left over";
		bool success = true;
		UCorvaneBPLibrary::getMimeTypeByFile(EHTTPCorvFileUpload::E_ad, text(path), mimeType, success);
		EXPECT_EQ(mimeType.IsEmpty(), !success);
		return success ? utf8(mimeType) : "-";
	}

	class MimeTypes : public ModuleFixture
	{
	};
} // namespace

TEST_F(MimeTypes, EveryRowCountsAndTheLaterOneWins)
{
	std::map<std::string, std::string> expected;
	std::map<std::string, int> groups;
	for (const FCorvMimeRow& row : CorvaneRules::mimeRows)
	{
		const std::string value = row.type;
		expected[utf8(FString(row.extension).ToUpper())] = value;
		++groups[value.substr(0, value.find('/'))];
	}
	EXPECT_EQ(expected.size(), 491u);
	EXPECT_EQ(groups,
		(std::map<std::string, int>{{"application", 235}, {"chemical", 75}, {"text", 65}, {"audio", 38}, {"image", 37}, {"video", 31},
			{"model", 10}, {"#application", 9}, {"x-world", 3}, {"#chemical", 2}, {"message", 1}, {"x-conference", 1}, {"x-epoc", 1}}));
	TMap<FString, FString> copy = UCorvaneBPLibrary::getMimeTypeMap();
	EXPECT_EQ(copy.Num(), 491);
	EXPECT_EQ(utf8(copy.FindRef("PNG")), "image/png");
	copy.Add("PNG", "changed");
	for (const auto& [extension, value] : expected)
	{
		EXPECT_EQ(type(extension.c_str()), value) << extension;
	}
}

TEST_F(MimeTypes, TheTellingRowsAreThese)
{
	const std::map<const char*, const char*> rows = {{"ez", "application/andrew-inset"}, {"PNG", "image/png"}, {"jpe", "image/jpeg"},
		{"bin", "application/octet-stream"}, {"php", "#application/x-httpd-php"}, {"phtml", "#application/x-httpd-php"},
		{"pht", "#application/x-httpd-php"}, {"phps", "#application/x-httpd-php-source"}, {"php3", "#application/x-httpd-php3"},
		{"php3p", "#application/x-httpd-php3-preprocessed"}, {"php4", "#application/x-httpd-php4"}, {"php5", "#application/x-httpd-php5"},
		{"rhtml", "#application/x-httpd-eruby"}, {"smi", "#chemical/x-daylight-smiles"}, {"mif", "#chemical/x-mif"},
		{"pcf.Z", "application/x-font"}, {"~", "application/x-trash"}, {"%", "application/x-trash"}, {"h++", "text/x-c++hdr"},
		// listed twice
		{"spl", "application/x-futuresplash"}, {"cpt", "image/x-corelphotopaint"}, {"csh", "text/x-csh"}, {"sh", "text/x-sh"},
		{"tcl", "text/x-tcl"}, {"m3u", "audio/x-mpegurl"}, {"ra", "audio/x-realaudio"}, {"asn", "chemical/x-ncbi-asn1-spec"},
		{"ent", "chemical/x-pdb"}, {"wrl", "x-world/x-vrml"}, {"vrml", "x-world/x-vrml"}, {"amr", "audio/amr"}};
	for (const auto& [extension, value] : rows)
	{
		EXPECT_EQ(type(extension), value) << extension;
	}
	for (const char* unknown : {"gz", "xls", "ppt", "apk", "webp", "wasm", "", "tar.gz", ".png", " png"})
	{
		EXPECT_EQ(type(unknown), "application/octet-stream") << unknown;
	}
}

TEST_F(MimeTypes, AFileMustExistAndBeKnown)
{
	const TempDir dir;
	for (const auto& [name, value] : {std::pair("a.PhP", "#application/x-httpd-php"), {"a.tar", "application/x-tar"}, {"a.GZ", "-"},
			 {"font.pcf.Z", "-"}, {"png", "-"}, {"png.", "-"}})
	{
		EXPECT_EQ(typeOfFile(dir.write(name, "")), value) << "there is no type in reserve here";
	}
	EXPECT_EQ(typeOfFile(dir.path("photo.png")) + typeOfFile(dir.path()), "--");
}
