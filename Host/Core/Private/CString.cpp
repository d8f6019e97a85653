#include "Misc/CString.h"

#include <cstdlib>
#include <string>

namespace
{
	/** @return the text up to the first unit that is not ASCII: no number goes on after it. */
	std::string asciiPart(const TCHAR* Text)
	{
		std::string Narrow;
		for (; *Text && *Text < 0x80; ++Text)
		{
			Narrow.push_back(static_cast<char>(*Text));
		}
		return Narrow;
	}
} // namespace

int64 FCString::Atoi64(const TCHAR* Text)
{
	return std::strtoll(asciiPart(Text).c_str(), nullptr, 10);
}

double FCString::Atod(const TCHAR* Text)
{
	return std::strtod(asciiPart(Text).c_str(), nullptr);
}
