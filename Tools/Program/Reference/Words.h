#pragma once

#include <string_view>

namespace Program
{
	/** @return whether a character may stand in a name. */
	constexpr bool isWordCharacter(char c)
	{
		return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
	}

	/** @return whether a word stands in a text, and not as a part of another one. */
	constexpr bool hasWord(std::string_view text, std::string_view word)
	{
		for (size_t place = text.find(word); place != std::string_view::npos; place = text.find(word, place + 1))
		{
			const size_t end = place + word.size();
			if ((place == 0 || !isWordCharacter(text[place - 1])) && (end >= text.size() || !isWordCharacter(text[end])))
			{
				return true;
			}
		}
		return false;
	}
} // namespace Program
