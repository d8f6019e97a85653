#include "RequestHeaders.h"

#include "Text.h"

#include <algorithm>
#include <new>
#include <string>

namespace
{
	const FString contentLength(TEXT("Content-Length"));
	const FString expect(TEXT("Expect"));
	const FString userAgent(TEXT("User-Agent"));

	/** A line break or a zero would end the header early and let its value write headers of its own. */
	bool isSafeValue(FStringView Value)
	{
		int32 Faults = 0; // no branch for each unit: compilers then look at many at once
		for (const TCHAR Unit : Value)
		{
			Faults |= ((Unit < 0x20) & (Unit != '\t')) | (Unit == 0x7F);
		}
		return Faults == 0;
	}

	/** Whether a text in bytes or units is an RFC 9110 token. */
	template <class View>
	bool isToken(View Text)
	{
		constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
		const auto bTokenUnit = [marks](auto Unit)
		{
			return (Unit >= '0' && Unit <= '9') || (Unit >= 'A' && Unit <= 'Z') || (Unit >= 'a' && Unit <= 'z') ||
				   std::find(marks.begin(), marks.end(), Unit) != marks.end();
		};
		return !Text.empty() && std::all_of(Text.begin(), Text.end(), bTokenUnit);
	}

	void addLine(FHeaderLines& Lines, const std::string& Line)
	{
		curl_slist* Grown = curl_slist_append(Lines.get(), Line.c_str());
		if (!Grown)
		{
			throw std::bad_alloc();
		}
		static_cast<void>(Lines.release()); // still the head of the grown list, unless the list was empty
		Lines.reset(Grown);
	}
} // namespace

bool RequestHeaders::IsToken(std::string_view Text)
{
	return isToken(Text);
}

bool RequestHeaders::HoldBeginningOfBody(const FHeaderMap& Headers)
{
	constexpr std::string_view emptyLine = "\r\n\r\n";
	const std::string Length = Text::ToUtf8(Headers.Get(contentLength));
	const size_t NumberEnd = Length.find_first_not_of("0123456789");
	return NumberEnd != 0 && NumberEnd != Length.npos && Length.compare(NumberEnd, emptyLine.size(), emptyLine) == 0 &&
		   Length.find('\0') == Length.npos;
}

FString RequestHeaders::FindFault(const FHeaderMap& Headers, bool bBodyIsStream)
{
	const bool bLengthHoldsBody = bBodyIsStream && HoldBeginningOfBody(Headers);
	for (const auto& [Name, Value] : Headers)
	{
		if (!isToken(FStringView(Name)))
		{
			return TEXT("a header has a name that cannot be sent");
		}
		if (!isSafeValue(Value) && !(bLengthHoldsBody && Name == contentLength))
		{
			return TEXT("header ") + Name + TEXT(" has control characters in its value");
		}
	}
	return FString();
}

FHeaderLines RequestHeaders::ToWire(const FHeaderMap& Headers, uint64 BodySize)
{
	FHeaderLines Lines;
	for (const auto& [Name, Value] : Headers)
	{
		addLine(Lines, Text::ToUtf8(Name) + ": " + Text::ToUtf8(Value));
	}
	if (!Headers.Contains(userAgent))
	{
		addLine(Lines, "User-Agent: Host/5.5");
	}
	if (!Headers.Contains(contentLength))
	{
		addLine(Lines, "Content-Length: " + std::to_string(BodySize));
	}
	if (!Headers.Contains(expect))
	{
		addLine(Lines, "Expect:"); // bodies go out at once, whatever their size
	}
	return Lines;
}

void RequestHeaders::DropForOtherHost(curl_slist* Lines)
{
	for (; Lines; Lines = Lines->next)
	{
		const std::string_view Line = Lines->data;
		const std::string_view Name = Line.substr(0, Line.find(':'));
		// The others that are meant for one host are libcurl's care.
		if (Text::EqualNoCase(Name, "Proxy-Authorization") || Text::EqualNoCase(Name, "Host"))
		{
			*Lines->data = '\0'; // libcurl passes over an empty line
		}
	}
}
