#pragma once

#include <string_view>

namespace HeaderTool
{
	/** @return the place of the first byte that belongs to no character of UTF-8; the size of the text when all do. */
	size_t findNonUtf8(std::string_view text);
} // namespace HeaderTool
