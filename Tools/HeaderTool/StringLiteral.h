#pragma once

#include <string>
#include <string_view>

namespace HeaderTool
{
	/** @return the length of the quoted text that `text` begins with, quotes included. Throws ParseError when it does not end. */
	size_t quotedLength(std::string_view text, int line);

	/** The same for a raw string, without its prefix. */
	size_t rawLength(std::string_view text, int line);

	/**
	 * @param body  what stands between the quotes of an ordinary string.
	 * @return its value in UTF-8. Throws ParseError for an escape that the language does not have.
	 */
	std::string unescape(std::string_view body, int line);

	/** @return the value as a C++ string literal with its quotes; bytes outside ASCII stay as they are. */
	std::string quote(std::string_view value);
} // namespace HeaderTool
