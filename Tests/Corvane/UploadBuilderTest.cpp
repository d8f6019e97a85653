#include "CorvaneRequestCompleteObject.h"
#include "UObject/Class.h"
#include "UploadFixture.h"

using testing::HasSubstr;

namespace
{
	constexpr EHTTPCorvFileUpload absolute = EHTTPCorvFileUpload::E_ad;

	class UploadBuilder : public UploadTest
	{
	protected:
		/** Calls one of the four builders, counted from 0, on the outputs of this fixture. */
		int32 build(int builder, const char* url, const TArray<FString>& ids)
		{
			const FString first = ids.IsEmpty() ? FString() : ids[0];
			switch (builder)
			{
			case 0:
				return UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST(
					others, url, {}, absolute, "/f", first, {}, "given", requests, id);
			case 1:
				return UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
					others, url, {}, absolute, "/f", first, Type::PUT, "given", requests, id);
			case 2:
				return UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(
					others, url, {}, absolute, {"/f"}, ids, {}, "given", requests, id);
			default:
				return UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT(
					others, url, {}, absolute, {"/f"}, ids, "given", requests, id);
			}
		}

		void expectRefusal(int32 result)
		{
			EXPECT_EQ(result, 400);
			EXPECT_EQ(requests.Num(), 1) << "the records so far go on";
			EXPECT_EQ(utf8(id), "given");
			ASSERT_EQ(completions.size(), 1u) << "inside the call";
			EXPECT_EQ(completions[0].statusCode, 400);
			EXPECT_EQ(completions[0].requestID, "given");
			completions.clear();
			requests = {};
		}

		const TArray<FhttpRequest> others = get("http://other");
		TArray<FhttpRequest> requests;
		FString id;
	};
} // namespace

TEST_F(UploadBuilder, RefusesAShortUrlAndAMissingList)
{
	for (int builder = 0; builder < 4; ++builder)
	{
		expectRefusal(build(builder, "ab", {"x"}));
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : URL to short."), 4);
	expectRefusal(build(2, "abc", {}));
	expectRefusal(build(3, "abc", {}));
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : File ID is missing"), 2);
	expectRefusal(build(3, "ab", {}));
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : File ID is missing"), 2) << "the URL comes first";
}

TEST_F(UploadBuilder, PutsItsRecordBehindTheOthers)
{
	for (int builder = 0; builder < 4; ++builder)
	{
		EXPECT_EQ(build(builder, "abc", {""}), 0) << "an empty field name is one";
		ASSERT_EQ(requests.Num(), 2);
		const FhttpRequest& record = requests[1];
		EXPECT_EQ(record.requestType, builder % 2 == 0 ? EHTTPCorvRequestType::POST_UPLOAD : EHTTPCorvRequestType::PUT);
		EXPECT_EQ(record.directoryType, absolute);
		EXPECT_EQ(record.filePaths.Num(), builder == 1 ? 0 : 1) << "a single POST travels as a list of one";
		EXPECT_EQ(record.fileIDs.Num(), builder == 1 ? 0 : 1);
		EXPECT_EQ(record.filePath.IsEmpty(), builder != 1);
		EXPECT_EQ(utf8(record.requestCompleteObject()->getRequestID()), "given");
	}
}

TEST_F(UploadBuilder, TurnsUploadTypesIntoRequestTypes)
{
	using Request = EHTTPCorvRequestType;
	const std::pair<int, Request> types[] = {
		{0, Request::PUT}, {1, Request::PUT_STREAM_BLANK}, {2, Request::PUT_STREAM_COPY}, {3, Request::PUT_STREAM_MP}, {9, Request::PUT}};
	for (const auto& [number, expected] : types)
	{
		EXPECT_EQ(put("abc", "/f", static_cast<Type>(number))[0].requestType, expected) << number;
	}
}

TEST_F(UploadBuilder, TooltipsStandAsTheyWereGiven)
{
	for (const UFunction& function : UCorvaneBPLibrary::StaticClass()->Definition.Functions)
	{
		const std::string name = function.Name;
		const std::string tooltip = FindMeta(function.Meta, "ToolTip") ? FindMeta(function.Meta, "ToolTip") : "";
		if (name == "CreateHttpRequestFileUploadPOST" || name == "CreateHttpRequestFileUploadPUT")
		{
			EXPECT_THAT(tooltip, testing::StartsWith("Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" "
													 "name=\"myFile\"> from an html upload\n"));
			EXPECT_THAT(tooltip, testing::EndsWith("\n@param requestID Optional parameter. It will be output again in the "
												   "httpRequestComplete event. This allows the request being assigned to the response."));
		}
		if (name == "CreateHttpRequestFileUploadPUT")
		{
			EXPECT_THAT(tooltip, HasSubstr("fileid, filename, fileformat, mimetype"));
			EXPECT_THAT(tooltip, HasSubstr("With this option a header is created which goes with a trick into the body and writes the "
										   "necessary information of the file into the body."));
			EXPECT_THAT(tooltip, HasSubstr("After the upload is finished or canceled"));
		}
		if (name == "getMimeTypeByFile")
		{
			EXPECT_EQ(tooltip, "Determines the mime type based on the file extension.");
		}
	}
}
