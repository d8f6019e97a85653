#pragma once

namespace Program
{
	/** @return whether a character may stand in a name. */
	constexpr bool isWordCharacter(char c)
	{
		return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
	}
} // namespace Program
