#include "ResponseHeaders.h"

#include "Text.h"

#include <charconv>

namespace
{
	int32 readStatusCode(std::string_view StatusLine)
	{
		int32 Code = 0;
		const size_t Blank = StatusLine.find(' ');
		if (Blank != StatusLine.npos)
		{
			std::from_chars(StatusLine.data() + Blank + 1, StatusLine.data() + StatusLine.size(), Code);
		}
		return Code;
	}
} // namespace

void FResponseHeaders::AddLine(std::string_view Line)
{
	Line = Line.substr(0, Line.find_last_not_of("\r\n") + 1);
	const size_t Colon = Line.find(':');
	if (Line.starts_with("HTTP/"))
	{
		Clear();
		Code = readStatusCode(Line);
	}
	else if ((Line.starts_with(' ') || Line.starts_with('\t')) && !Lines.empty())
	{
		Lines.pop_back(); // the value of the line before goes on here
		Lines.append(" ").append(Text::Trim(Line)).append("\n");
	}
	else if (Colon != Line.npos)
	{
		Lines.append(Text::Trim(Line.substr(0, Colon))).append(":").append(Text::Trim(Line.substr(Colon + 1))).append("\n");
	}
}

void FResponseHeaders::Clear()
{
	Lines.clear();
	Code = 0;
}

std::string FResponseHeaders::Find(std::string_view Name) const
{
	std::string Joined;
	bool bFound = false;
	ForEach(
		[&](std::string_view Known, std::string_view Value)
		{
			if (Text::EqualNoCase(Known, Name))
			{
				Joined.append(bFound ? ", " : "").append(Value);
				bFound = true;
			}
		});
	return Joined;
}

uint64 FResponseHeaders::ContentLength() const
{
	uint64 Length = 0;
	const std::string Value = Find("Content-Length");
	std::from_chars(Value.data(), Value.data() + Value.size(), Length);
	return Length;
}

bool FResponseHeaders::HasContradictingLengths() const
{
	std::string_view First;
	bool bContradict = false;
	ForEach(
		[&](std::string_view Name, std::string_view Value)
		{
			if (Text::EqualNoCase(Name, "Content-Length"))
			{
				bContradict |= !First.empty() && First != Value;
				First = Value;
			}
		});
	return bContradict;
}
