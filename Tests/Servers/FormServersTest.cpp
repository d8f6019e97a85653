#include "CorvaneUploadForm.h"
#include "GameLoop.h"
#include "LargeFile.h"
#include "OtherServer.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace
{
	using Outcome = ECorvaneTransferOutcome;
	using nlohmann::json;

	/**
	 * A quote in a name is sent as %22, as browsers do. What comes out of a parser is its own matter: some take the sequence for
	 * a quote, some leave it as it is, some do the one to files and the other to fields.
	 */
	struct Server
	{
		const char* name;
		std::vector<std::string> words;
		const char* quoteInFileNames;
		const char* quoteInFieldNames;
	};

	const Server servers[] = {
		{"busboy", {"node", SERVERS "/form.mjs", SERVER_PACKAGES, "busboy"}, "%22", "%22"},
		{"multer", {"node", SERVERS "/form.mjs", SERVER_PACKAGES, "multer"}, "\"", "\""},
		{"formidable", {"node", SERVERS "/form.mjs", SERVER_PACKAGES, "formidable"}, "\"", "%22"},
		{"werkzeug", {"/usr/bin/python3", SERVERS "/form.py", "werkzeug"}, "%22", "%22"},
		{"aiohttp", {"/usr/bin/python3", SERVERS "/form.py", "aiohttp"}, "%22", "%22"},
		{"php", {"php", "-d", "upload_max_filesize=1G", "-d", "post_max_size=1G", "-S", "127.0.0.1:0", SERVERS "/form.php"}, "%22", "%22"},
	};

	void PrintTo(const Server& server, std::ostream* stream)
	{
		*stream << server.name;
	}

	class FormServers : public ::testing::TestWithParam<Server>
	{
	protected:
		struct Field
		{
			std::string name, value;
		};
		/** Sends files, by their field names, and fields. @return what the server has read. */
		json send(const std::vector<Field>& files, const std::vector<Field>& fields)
		{
			TArray<FCorvaneFormFile> sentFiles;
			for (const Field& each : files)
			{
				FCorvaneFormFile file;
				file.FieldName = text(each.name);
				file.FilePath = text(each.value);
				sentFiles.Add(file);
			}
			TArray<FCorvaneFormField> sentFields;
			for (const Field& each : fields)
			{
				FCorvaneFormField field;
				field.Name = text(each.name);
				field.Value = text(each.value);
				sentFields.Add(field);
			}
			FCorvaneTransferReport report;
			UCorvaneUploadForm::Start(text(server.url()), sentFiles, sentFields, FCorvaneUploadOptions(),
				[&](const FCorvaneTransferReport& told) { report = told; });
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence) << ' ' << utf8(report.Answer);
			return json::parse(utf8(report.Answer), nullptr, false);
		}

		std::string quoted(std::string name, const char* quote) const
		{
			for (size_t place = name.find('"'); place != name.npos; place = name.find('"', place + std::string(quote).size()))
			{
				name.replace(place, 1, quote);
			}
			return name;
		}

		json fileOf(const std::string& field, const std::string& path, const std::string& type) const
		{
			const std::filesystem::path file(path);
			return {{"field", field}, {"name", quoted(file.filename().string(), GetParam().quoteInFileNames)}, {"type", type},
				{"size", std::filesystem::file_size(file)}, {"sha256", sha256Of(path)}};
		}

		const TempDir folder;
		OtherServer server{GetParam().words};
		FGameLoop loop;
	};

	/** What must not change of a file that is only read. */
	std::vector<timespec> timesOf(const std::string& path)
	{
		struct stat facts
		{
		};
		EXPECT_EQ(stat(path.c_str(), &facts), 0);
		return {facts.st_mtim, facts.st_ctim};
	}

	bool isSame(const timespec& one, const timespec& other)
	{
		return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
	}
} // namespace

TEST_P(FormServers, ReadNamesTypesFieldsAndBytesAsTheyWereSent)
{
	const std::string bytes = randomBytes(3'000'000);
	const std::string picture = folder.write("Bild ä \"x\" 'y'.png", bytes);
	const std::string empty = folder.write("leer; a=b.txt", "");
	const std::vector<timespec> before = timesOf(picture);
	const std::vector<Field> fields = {{"überschrift", "Grüße & \"mehr\"; a=b"}, {"lines", "one\r\ntwo\nthree\r\n"}, {"empty", ""},
		{"a\"b&c", "--\r\nContent-Disposition: form-data; name=\"x\"\r\n\r\n日本語 🙂"}};
	json read = send({{"bild", picture}, {"leer", empty}}, fields);
	std::sort(read["files"].begin(), read["files"].end()); // some tell them as they were through with them

	json expected = {{"fields", json::array()}, {"files", {fileOf("bild", picture, "image/png"), fileOf("leer", empty, "text/plain")}}};
	for (const Field& each : fields)
	{
		expected["fields"].push_back({quoted(each.name, GetParam().quoteInFieldNames), each.value});
	}
	EXPECT_EQ(read, expected);
	EXPECT_TRUE(folder.read(std::filesystem::path(picture).filename().string()) == bytes);
	EXPECT_TRUE(std::ranges::equal(timesOf(picture), before, isSame));
}

TEST_P(FormServers, ReadLargeFiles)
{
	const std::string path = folder.path("large.zip");
	writeLargeFile(path, 300 << 20);
	const json read = send({{"file", path}}, {});
	ASSERT_EQ(read["files"].size(), 1u);
	json file = read["files"][0];
	file["type"] = "any"; // which of the names for this type is in use, is told elsewhere
	EXPECT_EQ(file, fileOf("file", path, "any"));
}

INSTANTIATE_TEST_SUITE_P(Each, FormServers, ::testing::ValuesIn(servers), [](const auto& each) { return std::string(each.param.name); });
