#include "UploadFixture.h"

#include <algorithm>
#include <fstream>

namespace
{
	constexpr auto absolute = EHTTPCorvFileUpload::E_ad;

	TArray<FhttpRequest> checked(int32 result, const TArray<FhttpRequest>& requests, const UploadOptions& options)
	{
		EXPECT_EQ(result, requests.Num() == options.others.Num() ? 400 : 0);
		return requests;
	}
} // namespace

UploadTest::UploadTest(FGameLoopSettings settings)
	: ModuleFixture(settings)
{
	library().setUploadGracePeriod(0);
}

TArray<FhttpRequest> UploadTest::put(const std::string& url, const std::string& path, Type type, const UploadOptions& options)
{
	TArray<FhttpRequest> requests;
	FString id;
	const int32 result = UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
		options.others, text(url), options.header, absolute, text(path), text(options.fileID), type, text(options.requestID), requests, id);
	return checked(result, requests, options);
}

TArray<FhttpRequest> UploadTest::post(const std::string& url, const std::string& path, const UploadOptions& options)
{
	TArray<FhttpRequest> requests;
	FString id;
	const int32 result = UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST(options.others, text(url), options.header, absolute, text(path),
		text(options.fileID), options.fields, text(options.requestID), requests, id);
	return checked(result, requests, options);
}

TArray<FhttpRequest> UploadTest::multi(
	bool bPost, const std::string& url, const TArray<FString>& paths, const TArray<FString>& ids, const UploadOptions& options)
{
	TArray<FhttpRequest> requests;
	FString id;
	const FString requestID = text(options.requestID);
	const int32 result = bPost ? UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(options.others, text(url), options.header,
									 absolute, paths, ids, options.fields, requestID, requests, id)
							   : UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT(
									 options.others, text(url), options.header, absolute, paths, ids, requestID, requests, id);
	return checked(result, requests, options);
}

TArray<FhttpRequest> UploadTest::ofEveryKind(const std::string& url, const std::string& path)
{
	TArray<FhttpRequest> requests;
	FString id;
	UCorvaneBPLibrary::CreateHttpRequestIndividual(post(url, path), text(url), {{"Content-Type", "text/plain"}}, "PUT",
		EHTTPCorvIndividualType::STREAM, text(path), "", requests, id, false, false, true, false);
	for (const Type type : everyType)
	{
		requests.Append(put(url, path, type));
	}
	return requests;
}

std::string UploadTest::sparse(const std::string& name, std::uintmax_t size, const std::string& end) const
{
	const std::string path = dir.write(name, "");
	std::filesystem::resize_file(path, size);
	std::ofstream(path, std::ios::binary | std::ios::app) << end;
	return path;
}

std::vector<std::string> UploadTest::files() const
{
	std::vector<std::string> names;
	for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path()))
	{
		names.push_back(std::filesystem::relative(entry.path(), dir.path()).string());
	}
	std::sort(names.begin(), names.end());
	return names;
}
