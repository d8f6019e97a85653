#include "CorvaneRequestCompleteObject.h"
#include "UObject/Class.h"
#include "UploadFixture.h"

namespace
{
	class UploadBuilder : public UploadTest
	{
	protected:
		/** Calls one of the four builders, counted from 0: POST, PUT, and the two of several files. */
		int32 build(int builder, const char* url, const TArray<FString>& ids)
		{
			constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
			using Library = UCorvaneBPLibrary;
			requests = {};
			switch (builder)
			{
			case 0:
				return Library::CreateHttpRequestFileUploadPOST(others, url, {}, absolute, "/f", ids[0], {}, "given", requests, id);
			case 1:
				return Library::CreateHttpRequestFileUploadPUT(others, url, {}, absolute, "/f", ids[0], Type::PUT, "given", requests, id);
			case 2:
				return Library::CreateHttpRequestFileMultiUploadPOST(others, url, {}, absolute, {"/f"}, ids, {}, "given", requests, id);
			default:
				return Library::CreateHttpRequestFileMultiUploadPUT(others, url, {}, absolute, {"/f"}, ids, "given", requests, id);
			}
		}

		const TArray<FhttpRequest> others = get("http://other");
		TArray<FhttpRequest> requests;
		FString id;
	};
} // namespace

TEST_F(UploadBuilder, RefusesAShortUrlAndAMissingList)
{
	struct Case
	{
		int builder;
		const char* url;
		TArray<FString> ids;
		const char* message;
	};
	const char* tooShort = "Cancel Request : URL to short.";
	const char* missing = "Cancel Request : File ID is missing";
	for (const Case& c : {Case{0, "ab", {"x"}, tooShort}, {1, "ab", {"x"}, tooShort}, {2, "ab", {"x"}, tooShort},
			 {3, "ab", {"x"}, tooShort}, {3, "ab", {}, tooShort}, {2, "abc", {}, missing}, {3, "abc", {}, missing}})
	{
		const int before = logged(ELogVerbosity::Error, c.message);
		completions.clear();
		EXPECT_EQ(build(c.builder, c.url, c.ids), 400);
		EXPECT_EQ(requests.Num(), 1) << "the records so far go on";
		EXPECT_EQ(utf8(id), "given");
		ASSERT_EQ(completions.size(), 1u) << "inside the call";
		EXPECT_EQ(completions[0].requestID + std::to_string(completions[0].statusCode), "given400");
		EXPECT_EQ(logged(ELogVerbosity::Error, c.message), before + 1);
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, ""), 7);
}

TEST_F(UploadBuilder, PutsItsRecordBehindTheOthers)
{
	for (int builder = 0; builder < 4; ++builder)
	{
		EXPECT_EQ(build(builder, "abc", {""}), 0) << "an empty field name is one";
		ASSERT_EQ(requests.Num(), 2);
		const FhttpRequest& record = requests[1];
		EXPECT_EQ(record.requestType, builder % 2 == 0 ? EHTTPCorvRequestType::POST_UPLOAD : EHTTPCorvRequestType::PUT);
		EXPECT_EQ(record.filePaths.Num(), builder == 1 ? 0 : 1) << "a single POST travels as a list of one";
		EXPECT_EQ(record.fileIDs.Num(), builder == 1 ? 0 : 1);
		EXPECT_EQ(record.filePath.IsEmpty(), builder != 1);
		EXPECT_EQ(utf8(record.requestCompleteObject()->getRequestID()), "given");
	}
	EXPECT_EQ(put("abc", "/f", static_cast<Type>(9))[0].requestType, EHTTPCorvRequestType::PUT);
}

TEST_F(UploadBuilder, TooltipsStandAsTheyWereGiven)
{
	const std::string start =
		"Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n";
	const std::string end = "\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows "
							"the request being assigned to the response.";
	const std::string put = "With this option a header is created which goes with a trick into the body and writes the necessary "
							"information of the file into the body.";
	const std::pair<std::string, std::vector<std::string>> cases[] = {
		{"CreateHttpRequestFileUploadPOST", {start, end}},
		{"CreateHttpRequestFileUploadPUT",
			{start, "fileid, filename, fileformat, mimetype", put, "After the upload is finished or canceled", end}},
		{"getMimeTypeByFile", {"Determines the mime type based on the file extension."}},
	};
	for (const auto& [name, parts] : cases)
	{
		const auto& all = UCorvaneBPLibrary::StaticClass()->Definition.Functions;
		const auto function = std::find_if(all.begin(), all.end(), [&](const UFunction& one) { return one.Name == name; });
		ASSERT_NE(function, all.end()) << name;
		for (const std::string& part : parts)
		{
			EXPECT_THAT(std::string(FindMeta(function->Meta, "ToolTip")), testing::HasSubstr(part)) << name;
		}
	}
}
