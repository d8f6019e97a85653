#include "NodeFixture.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"

#include <algorithm>
#include <ostream>

namespace
{
	using Library = UCorvaneBPLibrary;
	using Plain = UAsyncNodeHttpRequest;
	using FileNode = UAsyncNodeHttpDownloadUpload;
	using Records = TArray<FhttpRequest>;
	using Pairs = TMap<FString, FString>;

	constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
	constexpr auto overwrite = EHTTPCorvFileDownloadResumeType::E_OVERWRITE;
	constexpr int32 step = 4;

	// Two entries each, so that their order shows.
	Pairs header()
	{
		return {{"X-One", "1"}, {"X-Two", "2"}};
	}
	Pairs typed()
	{
		return {{"Content-Type", "text/x-own"}, {"X-Two", "2"}};
	}
	Pairs fields()
	{
		return {{"b", "1"}, {"a", "2"}};
	}

	/** @param call  runs a builder with its outputs. */
	template <class Call>
	Records built(Call call)
	{
		Records records;
		FString id;
		call(records, id);
		return records;
	}

	template <bool bWithLength, EHTTPCorvIndividualType type>
	NodeKind individual(const char* name)
	{
		// A stream's content is the path of the file, which stands for a text as well.
		return {name,
			[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
			{ return Plain::AsyncExecuteHTTP_Individual_REQUEST(at.url, typed(), "patch", type, at.file, id, bWithLength); },
			[](const NodeSite& at, const FString& id)
			{
				return built(
					[&](Records& records, FString& out) {
						Library::CreateHttpRequestIndividual(
							{}, at.url, typed(), "patch", type, at.file, id, records, out, bWithLength, false, false, false);
					});
			}};
	}

	template <EHTTPCorvFileUploadType type>
	NodeKind put(const char* name)
	{
		return {name,
			[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
			{ return FileNode::AsyncExecuteHTTP_Upload_PUT_REQUEST(at.url, header(), absolute, at.file, "field", type, id); },
			[](const NodeSite& at, const FString& id)
			{
				return built([&](Records& records, FString& out)
					{ Library::CreateHttpRequestFileUploadPUT({}, at.url, header(), absolute, at.file, "field", type, id, records, out); });
			}};
	}
} // namespace

const std::vector<NodeKind> nodeKinds = {
	{"Get",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return Plain::AsyncExecuteHTTP_GET_REQUEST(at.url, header(), id, false); },
		[](const NodeSite& at, const FString& id) {
			return built(
				[&](Records& records, FString& out) { Library::CreateHttpRequestGET({}, at.url, header(), id, false, records, out); });
		}},
	{"Post",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return Plain::AsyncExecuteHTTP_POST_REQUEST(at.url, header(), fields(), id, false); },
		[](const NodeSite& at, const FString& id)
		{
			return built([&](Records& records, FString& out)
				{ Library::CreateHttpRequestPOST({}, at.url, header(), fields(), id, false, records, out); });
		}},
	individual<true, EHTTPCorvIndividualType::STRING>("IndividualText"),
	individual<false, EHTTPCorvIndividualType::STRING>("IndividualTextWithoutLength"),
	individual<false, EHTTPCorvIndividualType::STREAM>("IndividualFile"),
	{"GoogleDrive",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return Plain::AsyncExecuteHTTP_GoogleDrive_REQUEST(at.downloadID, id, 5); },
		[](const NodeSite& at, const FString& id) {
			return built(
				[&](Records& records, FString& out) { Library::CreateHttpRequestGoogleDrive({}, at.downloadID, id, 5, records, out); });
		}},
	{"GoogleFileInfo",
		[](const NodeSite& at, const FString&) -> UAsyncNodeCorv*
		{ return UAsyncNodeHttpGoogleFileInfoRequest::AsyncExecuteHTTP_GoogleFileInfo_REQUEST(at.downloadID); },
		[](const NodeSite& at, const FString& id)
		{
			return built([&](Records& records, FString& out)
				{ Library::CreateHttpRequestGoogleDriveFileInfo({}, at.downloadID, id, records, out); });
		}},
	{"Download",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return FileNode::AsyncExecuteHTTP_Download_REQUEST(at.url, header(), overwrite, absolute, at.target, id); },
		[](const NodeSite& at, const FString& id)
		{
			return built([&](Records& records, FString& out)
				{ Library::CreateHttpRequestGETDownload({}, at.url, header(), overwrite, absolute, at.target, id, records, out); });
		}},
	{"LowRamDownload",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return FileNode::AsyncExecuteHTTP_Low_RAM_Download_REQUEST(at.url, header(), overwrite, absolute, at.target, id, step); },
		[](const NodeSite& at, const FString& id)
		{
			return built(
				[&](Records& records, FString& out) {
					Library::CreateHttpRequestGETLowRamDownload(
						{}, at.url, header(), overwrite, absolute, at.target, id, records, out, step);
				});
		}},
	{"UploadPost",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{ return FileNode::AsyncExecuteHTTP_Upload_POST_REQUEST(at.url, header(), absolute, at.file, "field", fields(), id); },
		[](const NodeSite& at, const FString& id)
		{
			return built(
				[&](Records& records, FString& out) {
					Library::CreateHttpRequestFileUploadPOST({}, at.url, header(), absolute, at.file, "field", fields(), id, records, out);
				});
		}},
	put<EHTTPCorvFileUploadType::PUT>("UploadPut"),
	put<EHTTPCorvFileUploadType::PUT_STREAM_BLANK>("UploadPutStreamBlank"),
	put<EHTTPCorvFileUploadType::PUT_STREAM_MP>("UploadPutStreamMultipart"),
	{"MultiUploadPost",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{
			const TArray<FString> ids = at.file.IsEmpty() ? TArray<FString>() : TArray<FString>{"one", "two"};
			return FileNode::AsyncExecuteHTTP_Multi_Upload_POST_REQUEST(at.url, header(), absolute, {at.file, at.file}, ids, fields(), id);
		},
		[](const NodeSite& at, const FString& id)
		{
			return built(
				[&](Records& records, FString& out)
				{
					Library::CreateHttpRequestFileMultiUploadPOST(
						{}, at.url, header(), absolute, {at.file, at.file}, {"one", "two"}, fields(), id, records, out);
				});
		}},
	{"MultiUploadPut",
		[](const NodeSite& at, const FString& id) -> UAsyncNodeCorv*
		{
			const TArray<FString> ids = at.file.IsEmpty() ? TArray<FString>() : TArray<FString>{"one", "two"};
			return FileNode::AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST(at.url, header(), absolute, {at.file, at.file}, ids, id);
		},
		[](const NodeSite& at, const FString& id)
		{
			return built(
				[&](Records& records, FString& out) {
					Library::CreateHttpRequestFileMultiUploadPUT(
						{}, at.url, header(), absolute, {at.file, at.file}, {"one", "two"}, id, records, out);
				});
		}},
};

const NodeKind& nodeKind(std::string_view name)
{
	return *std::find_if(nodeKinds.begin(), nodeKinds.end(), [name](const NodeKind& kind) { return kind.name == name; });
}

void PrintTo(const NodeKind& kind, std::ostream* stream)
{
	*stream << kind.name;
}
