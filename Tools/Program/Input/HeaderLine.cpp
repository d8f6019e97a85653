#include "HeaderLine.h"

#include "InputError.h"
#include "ValueTransfer.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	std::pair<FString, FString> parseHeader(const std::string& line)
	{
		const size_t colon = line.find(':');
		if (colon == std::string::npos || colon == 0)
		{
			throw Reflect::InputError(fmt::format("'{}' is no header; it is written -H 'Accept: text/plain'", line));
		}
		const size_t value = std::min(line.find_first_not_of(' ', colon + 1), line.size());
		return {Reflect::toFString(line.substr(0, colon)), Reflect::toFString(line.substr(value))};
	}
} // namespace Program
