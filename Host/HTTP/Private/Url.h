#pragma once

#include "Containers/UnrealString.h"

#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string>

/** A parsed http or https URL. It may carry a user and a password. */
class FUrl
{
public:
	/** @return nothing when Text is no URL that may be sent: another scheme, malformed, or with blanks or control characters. */
	static std::optional<FUrl> Parse(const FString& Text);

	/** @param Other  an absolute URL. @return whether it leads to the same host and port. */
	bool HasSameHost(const char* Other) const;

	/** @return host and port, such as "example.org:443", in lower case. Put together when it is asked for first: one thread at a time. */
	const std::string& Authority() const;

	/** For libcurl; owned by this object. */
	CURLU* Get() const { return Handle.get(); }

private:
	struct FCleanup
	{
		void operator()(CURLU* Url) const { curl_url_cleanup(Url); }
	};

	FUrl();
	std::string Part(CURLUPart What) const;

	std::unique_ptr<CURLU, FCleanup> Handle;
	mutable std::string HostAndPort; // empty = not asked for yet
};
