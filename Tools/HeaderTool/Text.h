#pragma once

#include <string>
#include <string_view>

/** Characters and string literals. */
namespace HeaderTool
{
	/** @return the place of the first byte that belongs to no character of UTF-8; the size of the text when all do. */
	size_t findNonUtf8(std::string_view text);

	/** @return the value of a string literal. @param body  what stands between its quotes. */
	std::string unescape(std::string_view body, int line);

	/** @return the value as a C++ string literal with its quotes; bytes outside ASCII stay as they are. */
	std::string quote(std::string_view value);
} // namespace HeaderTool
