#include "Redirects.h"

#include "Text.h"

namespace
{
	bool turnsIntoGet(int32 Code, std::string_view Verb)
	{
		switch (Code)
		{
		case 301:
		case 302:
			return Text::EqualNoCase(Verb, "POST");
		case 303:
			return !Text::EqualNoCase(Verb, "HEAD");
		default:
			return false;
		}
	}

	bool describesBody(std::string_view Header)
	{
		return Text::StartsWithNoCase(Header, "Content-") || Text::EqualNoCase(Header, "Transfer-Encoding");
	}

	bool isMeantForOneOrigin(std::string_view Header)
	{
		return Text::EqualNoCase(Header, "Authorization") || Text::EqualNoCase(Header, "Cookie") || Text::EqualNoCase(Header, "Host");
	}
} // namespace

bool Redirects::IsRedirect(int32 Code, std::string_view Location)
{
	return !Location.empty() && (Code == 301 || Code == 302 || Code == 303 || Code == 307 || Code == 308);
}

std::optional<FOutgoing> Redirects::NextHop(const FOutgoing& Hop, int32 Code, std::string_view Location)
{
	std::optional<FUrl> Url = Hop.Url.Resolve(Location);
	if (!Url)
	{
		return std::nullopt;
	}
	const bool bBecomesGet = turnsIntoGet(Code, Hop.Verb);
	const bool bSameOrigin = Hop.Url.HasSameOrigin(*Url);
	FHeaderList Headers = Hop.Headers.Filtered(
		[=](std::string_view Name) { return !(bBecomesGet && describesBody(Name)) && (bSameOrigin || !isMeantForOneOrigin(Name)); });
	return FOutgoing{bBecomesGet ? "GET" : Hop.Verb, std::move(*Url), std::move(Headers), bBecomesGet ? nullptr : Hop.Body,
		bBecomesGet || Hop.bLengthIsTrue, false};
}
