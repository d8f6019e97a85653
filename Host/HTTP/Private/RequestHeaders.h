#pragma once

#include "HeaderMap.h"

#include <curl/curl.h>
#include <memory>
#include <string_view>

/** Header lines in the form that libcurl takes them; a name with nothing after its colon is left out. */
struct FHeaderLinesCleanup
{
	void operator()(curl_slist* List) const { curl_slist_free_all(List); }
};
using FHeaderLines = std::unique_ptr<curl_slist, FHeaderLinesCleanup>;

/** What a program's headers become on the wire. */
namespace RequestHeaders
{
	/** Whether Text is an RFC 9110 token, as method and header names have to be. */
	bool IsToken(std::string_view Text);

	/** Whether the body begins in the Content-Length: a number, an empty line and more. */
	bool HoldBeginningOfBody(const FHeaderMap& Headers);

	/** @return what keeps the headers from being sent, in words; empty when nothing does. */
	FString FindFault(const FHeaderMap& Headers, bool bBodyIsStream);

	/** @param BodySize  announced where the headers announce none. */
	FHeaderLines ToWire(const FHeaderMap& Headers, uint64 BodySize);

	/** A redirect leads to another host: what is meant for the first one stays behind. */
	void DropForOtherHost(curl_slist* Lines);
} // namespace RequestHeaders
