#include "Containers/UnrealString.h"

#include <fmt/format.h>
#include <fmt/printf.h>

#include <cassert>
#include <string_view>

namespace
{
	using View = std::u16string_view;

	bool isBeforeLetter(TCHAR unit)
	{
		return (unit >= u'0' && unit <= u'9') || unit == u'.' || unit == u'l';
	}

	/** @return the conversion at the beginning of a format, with its percent sign. */
	View conversionOf(View format)
	{
		std::size_t letter = 1;
		while (letter < format.size() && isBeforeLetter(format[letter]))
		{
			++letter;
		}
		assert(letter < format.size() && "a format ends inside a conversion");
		return format.substr(0, letter + 1);
	}

	/** Texts are taken over unit by unit, as they are; numbers are ASCII. */
	void append(std::u16string& result, [[maybe_unused]] View conversion, const TCHAR* text)
	{
		assert(conversion == u"%s" && "texts are neither filled nor cut");
		result.append(text);
	}

	template <class Number>
	void append(std::u16string& result, View conversion, Number value)
	{
		if constexpr (std::is_integral_v<Number>)
		{
			if (conversion == u"%d" || conversion == u"%lld") // by far the most
			{
				const fmt::format_int plain(value);
				for (const char digit : std::string_view(plain.data(), plain.size()))
				{
					result.push_back(static_cast<TCHAR>(digit));
				}
				return;
			}
		}
		const std::string number = fmt::sprintf(std::string(conversion.begin(), conversion.end()), value);
		result.append(number.begin(), number.end());
	}
} // namespace

FString FString::PrintfImpl(const TCHAR* Format, std::initializer_list<FArgument> Arguments)
{
	FString Result;
	Result.Text.reserve(256); // of most lines
	const FArgument* Next = Arguments.begin();
	for (View Rest = Format; !Rest.empty();)
	{
		const std::size_t Literal = std::min(Rest.find(u'%'), Rest.size());
		Result.Text.append(Rest.substr(0, Literal));
		Rest.remove_prefix(Literal);
		if (Rest.empty())
		{
			break;
		}
		const View Conversion = conversionOf(Rest);
		Rest.remove_prefix(Conversion.size());
		if (Conversion == u"%%")
		{
			Result.Text.push_back(u'%');
			continue;
		}
		assert(Next != Arguments.end() && "a format has more conversions than arguments");
		std::visit([&](auto Value) { append(Result.Text, Conversion, Value); }, *Next++);
	}
	return Result;
}
