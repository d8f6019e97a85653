#pragma once

#include "HeaderList.h"
#include "RequestBody.h"
#include "Url.h"

#include <string>

/** One hop of a request as it goes on the wire; everything in it has been checked. */
struct FOutgoing
{
	std::string Verb;
	FUrl Url;
	FHeaderList Headers;
	std::shared_ptr<FRequestBody> Body; // null = none
	bool bLengthIsTrue = true; // false: the script announces another length than the body has
	bool bPlainHttp1 = false; // nothing but HTTP/1.1, no redirects, a connection for this hop alone
};
