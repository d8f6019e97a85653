#include "Lab/Script/Options.h"

#include <charconv>
#include <cmath>

namespace Lab
{
	namespace
	{
		/** Values of a query are text. */
		std::optional<double> numberIn(const nlohmann::json& value)
		{
			if (value.is_number())
			{
				return value.get<double>();
			}
			double number = 0;
			const std::string text = value.is_string() ? value.get<std::string>() : "";
			const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
			const bool isNumber = error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
			return isNumber ? std::optional(number) : std::nullopt;
		}
	} // namespace

	void Options::fail(const char* name, const std::string& wanted) const
	{
		throw std::invalid_argument(whose + ": " + name + " has to be " + wanted);
	}

	std::string Options::text(const char* name, const std::string& otherwise) const
	{
		if (!has(name))
		{
			return otherwise;
		}
		const nlohmann::json& value = values.at(name);
		if (value.is_number())
		{
			return value.dump();
		}
		return value.is_string() ? value.get<std::string>() : (fail(name, "a text"), "");
	}

	double Options::number(const char* name, double otherwise) const
	{
		const std::optional<double> value = has(name) ? numberIn(values.at(name)) : otherwise;
		return value && *value >= 0 ? *value : (fail(name, "a number that is not negative"), 0);
	}

	bool Options::flag(const char* name, bool otherwise) const
	{
		if (!has(name) || values.at(name).is_boolean())
		{
			return has(name) ? values.at(name).get<bool>() : otherwise;
		}
		const std::string word = text(name);
		const bool isTrue = word.empty() || word == "true" || word == "1";
		return isTrue || word == "false" || word == "0" ? isTrue : (fail(name, "true or false"), false);
	}

	std::optional<std::uint64_t> Options::bytes(const char* name) const
	{
		return has(name) ? std::optional(static_cast<std::uint64_t>(number(name))) : std::nullopt;
	}

	Place Options::place(const char* name) const
	{
		const std::string word = has(name) ? text(name) : "";
		if (word.ends_with('%'))
		{
			const std::optional<double> percent = numberIn(word.substr(0, word.size() - 1));
			return percent ? Place{{}, *percent / 100} : (fail(name, "bytes, or a share such as 90%"), Place());
		}
		return {bytes(name)};
	}

	std::vector<std::size_t> Options::sizes(const char* name) const
	{
		std::vector<std::size_t> sizes;
		for (const nlohmann::json& each : list(name))
		{
			const std::optional<double> number = numberIn(each);
			sizes.push_back(number && *number >= 1 ? static_cast<std::size_t>(*number) : (fail(name, "a list of sizes"), 0U));
		}
		return sizes;
	}

	nlohmann::json Options::list(const char* name) const
	{
		nlohmann::json all = nlohmann::json::array();
		if (has(name) && values.at(name).is_array())
		{
			return values.at(name);
		}
		const std::string words = text(name); // of a query: divided by commas
		for (std::size_t start = 0; start < words.size();)
		{
			const std::size_t end = std::min(words.find(',', start), words.size());
			all.push_back(words.substr(start, end - start));
			start = end + 1;
		}
		return all;
	}
} // namespace Lab
