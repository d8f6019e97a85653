#pragma once

#include "CoreMinimal.h"

#include <string>
#include <utility>

namespace Program
{
	/** @param line  "Name: value", as people type it. @return both. Throws InputError for any other line. */
	std::pair<FString, FString> parseHeader(const std::string& line);
} // namespace Program
