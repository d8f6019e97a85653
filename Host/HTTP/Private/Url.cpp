#include "Url.h"

#include "Text.h"

#include <algorithm>
#include <new>

namespace
{
	/** Characters above ASCII are sent percent-encoded: they may not stand in a request line. */
	constexpr unsigned parseFlags = CURLU_URLENCODE;

	bool hasWebScheme(std::string_view Url)
	{
		return Text::StartsWithNoCase(Url, "http://") || Text::StartsWithNoCase(Url, "https://");
	}

	/** Whether a reference names a scheme of its own. libcurl takes "mailto:x" for a relative path. */
	bool isAbsolute(std::string_view Reference)
	{
		const size_t End = Reference.find_first_of(":/?#");
		return End != Reference.npos && Reference[End] == ':';
	}

	bool isBlankOrControl(TCHAR Unit)
	{
		return Unit <= u' ' || (Unit >= 0x7F && Unit <= 0x9F);
	}
} // namespace

FUrl::FUrl(CURLU* Url)
	: Handle(Url)
{
	if (!Url)
	{
		throw std::bad_alloc();
	}
}

std::optional<FUrl> FUrl::Parse(const FString& Text)
{
	const FStringView Units = Text;
	const std::string Bytes = Text::ToUtf8(Text);
	if (std::any_of(Units.begin(), Units.end(), isBlankOrControl) || !hasWebScheme(Bytes))
	{
		return std::nullopt;
	}
	FUrl Url(curl_url());
	if (curl_url_set(Url.Get(), CURLUPART_URL, Bytes.c_str(), parseFlags) != CURLUE_OK)
	{
		return std::nullopt;
	}
	return Url;
}

std::optional<FUrl> FUrl::Resolve(std::string_view Location) const
{
	const auto bBad = [](char Byte) { return isBlankOrControl(static_cast<uint8>(Byte)) && static_cast<uint8>(Byte) < 0x80; };
	if (std::any_of(Location.begin(), Location.end(), bBad) || (isAbsolute(Location) && !hasWebScheme(Location)))
	{
		return std::nullopt;
	}
	FUrl Url = Copy();
	if (curl_url_set(Url.Get(), CURLUPART_URL, std::string(Location).c_str(), parseFlags) != CURLUE_OK)
	{
		return std::nullopt;
	}
	if (HasSameOrigin(Url))
	{
		Url.CopyCredentials(*this);
	}
	return Url;
}

bool FUrl::HasSameOrigin(const FUrl& Other) const
{
	return Part(CURLUPART_SCHEME) == Other.Part(CURLUPART_SCHEME) && Part(CURLUPART_PORT) == Other.Part(CURLUPART_PORT) &&
		   Text::EqualNoCase(Part(CURLUPART_HOST), Other.Part(CURLUPART_HOST));
}

std::string FUrl::Part(CURLUPart What) const
{
	char* Value = nullptr;
	const bool bPresent = curl_url_get(Handle.get(), What, &Value, CURLU_DEFAULT_PORT) == CURLUE_OK;
	const std::string Result(bPresent ? Value : "");
	curl_free(Value);
	return Result;
}

void FUrl::CopyCredentials(const FUrl& From)
{
	if (!Part(CURLUPART_USER).empty())
	{
		return;
	}
	for (const CURLUPart What : {CURLUPART_USER, CURLUPART_PASSWORD})
	{
		const std::string Value = From.Part(What);
		curl_url_set(Get(), What, Value.empty() ? nullptr : Value.c_str(), 0);
	}
}
