#include "DownloadFixture.h"

#include <filesystem>

Lab::Behaviour part(const std::string& range, const std::string& body)
{
	return Lab::Behaviour({Lab::text(body), Lab::status({.code = 206}), Lab::headers({{"Content-Range", range}})});
}

std::vector<std::string> ranges(const Lab::Origin& origin)
{
	std::vector<std::string> ranges;
	for (const Lab::Exchange& exchange : origin.log())
	{
		ranges.emplace_back(exchange.request->header("Range"));
	}
	return ranges;
}

TArray<FhttpRequest> DownloadFixture::build(const Download& download, const TArray<FhttpRequest>& others)
{
	const FString path = text(download.path.empty() ? targetPath : download.path == noPath ? "" : download.path);
	const FString url = text(download.url);
	TArray<FhttpRequest> requests;
	FString id;
	const int32 result = download.kind == DownloadKind::Whole
							 ? UCorvaneBPLibrary::CreateHttpRequestGETDownload(
								   others, url, download.header, download.action, download.directory, path, download.id, requests, id)
							 : UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(others, url, download.header, download.action,
								   download.directory, path, download.id, requests, id, download.step);
	const bool bRefused = requests.Num() == others.Num();
	EXPECT_EQ(result, bRefused ? 400 : 0);
	EXPECT_TRUE(!bRefused || (!completions.empty() && completions.back().requestID == utf8(id))) << "told inside the call";
	return requests;
}

void DownloadFixture::expectOutcome(const Fault& fault, DownloadKind kind)
{
	const std::string name = std::string("a server that ") + fault.name + ", " + describe(fault.before) + " before";
	setTarget(fault.before);
	completions.clear();
	Lab::Origin server;
	server.at("/file", fault.serve).at("/target", Lab::file(fault.after.value_or("")));
	execute(build({server.url("/file?secret#x"), kind, fault.action, "", "my-id"}));
	drain();
	ASSERT_EQ(completions.size(), 1u) << name;
	EXPECT_EQ(completions[0].statusCode, fault.statusCode) << name;
	EXPECT_EQ(completions[0].byteData, "") << name;
	EXPECT_EQ(describe(target()), describe(fault.after)) << name;
}

void DownloadFixture::setTarget(const Target& content)
{
	std::filesystem::remove(targetPath);
	if (content)
	{
		dir.write("target.bin", *content);
	}
}

DownloadFixture::Target DownloadFixture::target() const
{
	return dir.exists("target.bin") ? std::optional(dir.read("target.bin")) : std::nullopt;
}

std::string describe(const std::optional<std::string>& content)
{
	return content ? std::to_string(content->size()) + " bytes of sum " + std::to_string(std::hash<std::string>()(*content)) : "no file";
}
