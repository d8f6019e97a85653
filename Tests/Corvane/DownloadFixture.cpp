#include "DownloadFixture.h"

#include <filesystem>

TArray<FhttpRequest> DownloadFixture::build(const Download& download)
{
	const FString path = text(download.path.empty() ? targetPath : download.path);
	const FString url = text(download.url);
	TArray<FhttpRequest> requests;
	FString id;
	const int32 result = download.kind == DownloadKind::Whole
							 ? UCorvaneBPLibrary::CreateHttpRequestGETDownload(
								   {}, url, download.header, download.action, EHTTPCorvFileUpload::E_ad, path, download.id, requests, id)
							 : UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload({}, url, download.header, download.action,
								   EHTTPCorvFileUpload::E_ad, path, download.id, requests, id, download.step);
	EXPECT_EQ(result, requests.IsEmpty() ? 400 : 0);
	return requests;
}

void DownloadFixture::setTarget(const std::optional<std::string>& content)
{
	std::filesystem::remove(targetPath);
	if (content)
	{
		dir.write("target.bin", *content);
	}
}

std::optional<std::string> DownloadFixture::target() const
{
	return dir.exists("target.bin") ? std::optional(dir.read("target.bin")) : std::nullopt;
}

std::string describe(const std::optional<std::string>& content)
{
	return content ? std::to_string(content->size()) + " bytes" : "no file";
}
