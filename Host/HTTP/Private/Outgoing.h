#pragma once

#include "HeaderList.h"
#include "Url.h"

#include <string>

/** One hop of a request as it goes on the wire; everything in it has been checked. */
struct FOutgoing
{
	std::string Verb;
	FUrl Url;
	FHeaderList Headers;
};
