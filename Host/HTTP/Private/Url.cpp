#include "Url.h"

#include "Text.h"

#include <algorithm>
#include <new>

namespace
{
	bool isBlankOrControl(TCHAR Unit)
	{
		return Unit <= u' ' || (Unit >= 0x7F && Unit <= 0x9F);
	}
} // namespace

FUrl::FUrl()
	: Handle(curl_url())
{
	if (!Handle)
	{
		throw std::bad_alloc();
	}
}

std::optional<FUrl> FUrl::Parse(const FString& Text)
{
	const FStringView Units = Text;
	const std::string Bytes = Text::ToUtf8(Text);
	const bool bWebScheme = Text::StartsWithNoCase(Bytes, "http://") || Text::StartsWithNoCase(Bytes, "https://");
	if (!bWebScheme || std::any_of(Units.begin(), Units.end(), isBlankOrControl))
	{
		return std::nullopt;
	}
	FUrl Url;
	// Characters above ASCII are sent percent-encoded: they may not stand in a request line.
	if (curl_url_set(Url.Get(), CURLUPART_URL, Bytes.c_str(), CURLU_URLENCODE) != CURLUE_OK)
	{
		return std::nullopt;
	}
	return Url;
}

bool FUrl::HasSameHost(const char* Other) const
{
	FUrl Url;
	return curl_url_set(Url.Get(), CURLUPART_URL, Other, 0) == CURLUE_OK && Part(CURLUPART_PORT) == Url.Part(CURLUPART_PORT) &&
		   Text::EqualNoCase(Part(CURLUPART_HOST), Url.Part(CURLUPART_HOST));
}

const std::string& FUrl::Authority() const
{
	if (HostAndPort.empty())
	{
		HostAndPort = Part(CURLUPART_HOST) + ':' + Part(CURLUPART_PORT);
		std::transform(HostAndPort.begin(), HostAndPort.end(), HostAndPort.begin(),
			[](char C) { return C >= 'A' && C <= 'Z' ? static_cast<char>(C | 0x20) : C; });
	}
	return HostAndPort;
}

std::string FUrl::Part(CURLUPart What) const
{
	char* Value = nullptr;
	const bool bPresent = curl_url_get(Handle.get(), What, &Value, CURLU_DEFAULT_PORT) == CURLUE_OK;
	const std::string Result(bPresent ? Value : "");
	curl_free(Value);
	return Result;
}
