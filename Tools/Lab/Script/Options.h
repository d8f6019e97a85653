#pragma once

#include "Lab/Plans/Plan.h"

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Lab
{
	/** The options of one behaviour, by name. What is absent has its default. All throw std::invalid_argument for a value that does not fit. */
	class Options
	{
	public:
		/** @param inWhose  the behaviour that they are for, named in errors. @param inValues  an object. */
		Options(std::string inWhose, nlohmann::json inValues)
			: whose(std::move(inWhose))
			, values(std::move(inValues))
		{
		}

		bool has(const char* name) const { return values.contains(name); }
		const nlohmann::json& all() const { return values; }

		std::string text(const char* name, const std::string& otherwise = "") const;
		double number(const char* name, double otherwise = 0) const;
		int whole(const char* name, int otherwise = 0) const { return static_cast<int>(number(name, otherwise)); }
		bool flag(const char* name, bool otherwise = false) const;
		Milliseconds milliseconds(const char* name) const { return Milliseconds(number(name)); }
		std::optional<std::uint64_t> bytes(const char* name) const;
		/** A number of bytes, or a share of the body such as "90%". */
		Place place(const char* name) const;
		std::vector<std::size_t> sizes(const char* name) const;
		/** @return an element of a list; an empty one when the option is absent. */
		nlohmann::json list(const char* name) const;

		/** @param words  each with its meaning; the first one is the default. */
		template <class Enumeration>
		Enumeration choice(const char* name, const std::vector<std::pair<std::string, Enumeration>>& words) const
		{
			const std::string wanted = text(name, words.front().first);
			std::string known;
			for (const auto& [word, meaning] : words)
			{
				if (word == wanted)
				{
					return meaning;
				}
				known += (known.empty() ? "" : ", ") + word;
			}
			fail(name, "one of " + known);
		}

		[[noreturn]] void fail(const char* name, const std::string& wanted) const;

	private:
		const std::string whose;
		const nlohmann::json values;
	};
} // namespace Lab
