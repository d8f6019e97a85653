#include "DisplayName.h"

namespace Program
{
	namespace
	{
		bool isUpper(char c)
		{
			return c >= 'A' && c <= 'Z';
		}
		bool isLower(char c)
		{
			return c >= 'a' && c <= 'z';
		}
		bool isDigit(char c)
		{
			return c >= '0' && c <= '9';
		}
		char toUpper(char c)
		{
			return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
		}
	} // namespace

	std::string displayName(std::string_view name, bool isBool)
	{
		if (isBool && name.size() > 1 && name[0] == 'b' && isUpper(name[1]))
		{
			name.remove_prefix(1);
		}
		std::string shown;
		bool isInRun = false; // capitals and digits in a row stay together, with the capital of the word after them
		for (const char c : name)
		{
			const bool beginsWord = (isUpper(c) || isDigit(c)) && !isInRun;
			if ((beginsWord || c == '_') && !shown.empty() && shown.back() != ' ')
			{
				shown += ' ';
			}
			if (c != '_')
			{
				shown += shown.empty() || shown.back() == ' ' ? toUpper(c) : c;
			}
			isInRun = (isInRun || beginsWord || c == '_') && !isLower(c);
		}
		return shown;
	}
} // namespace Program
