#pragma once

#include "Containers/UnrealString.h"

#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string_view>

/** A parsed http or https URL. It may carry a user and a password. */
class FUrl
{
public:
	/** @return nothing when Text is no URL that may be sent: another scheme, malformed, or with blanks or control characters. */
	static std::optional<FUrl> Parse(const FString& Text);

	/** @param Location  the value of a Location header, absolute or relative to this URL. @return as Parse. */
	std::optional<FUrl> Resolve(std::string_view Location) const;

	/** Whether scheme, host and port are the same, so that credentials meant for one may go to the other. */
	bool HasSameOrigin(const FUrl& Other) const;

	FUrl Copy() const { return FUrl(curl_url_dup(Handle.get())); }
	/** For libcurl; owned by this object. */
	CURLU* Get() const { return Handle.get(); }

private:
	struct FCleanup
	{
		void operator()(CURLU* Url) const { curl_url_cleanup(Url); }
	};

	explicit FUrl(CURLU* Url);
	std::string Part(CURLUPart What) const;
	void CopyCredentials(const FUrl& From);

	std::unique_ptr<CURLU, FCleanup> Handle;
};
