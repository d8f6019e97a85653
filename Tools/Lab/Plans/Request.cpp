#include "Lab/Plans/Request.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace Lab
{
	namespace
	{
		std::string decode(std::string_view text)
		{
			std::string decoded;
			for (std::size_t place = 0; place < text.size(); ++place)
			{
				unsigned char byte = static_cast<unsigned char>(text[place] == '+' ? ' ' : text[place]);
				if (text[place] == '%' && place + 2 < text.size())
				{
					const char* const digits = text.data() + place + 1;
					place += std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2 ? 2U : 0U;
				}
				decoded += static_cast<char>(byte);
			}
			return decoded;
		}
	} // namespace

	bool equalsIgnoringCase(std::string_view a, std::string_view b)
	{
		const auto same = [](char one, char other)
		{ return std::tolower(static_cast<unsigned char>(one)) == std::tolower(static_cast<unsigned char>(other)); };
		return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
	}

	const std::string* findHeader(const std::vector<Header>& headers, std::string_view name)
	{
		const auto found =
			std::find_if(headers.begin(), headers.end(), [name](const Header& header) { return equalsIgnoringCase(header.name, name); });
		return found == headers.end() ? nullptr : &found->value;
	}

	std::string_view Request::query() const
	{
		const std::size_t mark = target.find('?');
		return mark == target.npos ? std::string_view() : std::string_view(target).substr(mark + 1);
	}

	std::string_view Request::header(std::string_view name) const
	{
		const std::string* const value = findHeader(headers, name);
		return value ? *value : std::string_view();
	}

	std::string Request::parameter(std::string_view name) const
	{
		const std::vector<Header> pairs = parsePairs(query());
		const std::string* const value = findHeader(pairs, name);
		return value ? *value : std::string();
	}

	std::vector<Header> parsePairs(std::string_view text)
	{
		std::vector<Header> pairs;
		while (!text.empty())
		{
			const std::string_view pair = text.substr(0, text.find('&'));
			text.remove_prefix(std::min(text.size(), pair.size() + 1));
			const std::string_view name = pair.substr(0, pair.find('='));
			if (!name.empty())
			{
				pairs.push_back({decode(name), decode(pair.substr(std::min(pair.size(), name.size() + 1)))});
			}
		}
		return pairs;
	}
} // namespace Lab
