#include "FieldFacts.h"
#include "ReferencePages.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	std::vector<const Example*> Reference::examplesOf(const NodeFacts& facts) const
	{
		std::vector<std::pair<std::ptrdiff_t, const Example*>> found; // with the number of other nodes in each
		for (const Example& example : examples)
		{
			if (example.uses(facts.ownName()))
			{
				const auto isUsed = [&](const NodeFacts& other) { return example.uses(other.ownName()); };
				found.emplace_back(std::count_if(nodes.begin(), nodes.end(), isUsed), &example);
			}
		}
		std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
		std::vector<const Example*> sorted;
		for (const auto& [others, example] : found)
		{
			sorted.push_back(example);
		}
		return sorted;
	}

	std::vector<const Guide*> Reference::guidesOf(const NodeFacts& facts) const
	{
		std::vector<const Guide*> found;
		for (const Guide& guide : guides)
		{
			if (guide.names(facts.ownName()))
			{
				found.push_back(&guide);
			}
		}
		return found;
	}

	std::vector<const UEnum*> Reference::enumerations() const
	{
		std::vector<const UEnum*> found;
		for (const NodeFacts& facts : nodes)
		{
			for (const UEnum* values : facts.enumerations())
			{
				if (std::find(found.begin(), found.end(), values) == found.end())
				{
					found.push_back(values);
				}
			}
		}
		return found;
	}

	std::vector<std::string> Reference::gaps() const
	{
		std::vector<std::string> missing;
		for (const NodeFacts& facts : nodes)
		{
			if (facts.texts.empty())
			{
				missing.push_back(facts.name + " has no text");
			}
			if (examplesOf(facts).empty())
			{
				missing.push_back(facts.name + " has no example");
			}
			for (const OutcomeFacts& outcome : facts.outcomes)
			{
				if (outcome.texts.empty())
				{
					missing.push_back(fmt::format("{} does not say what {} means", facts.name, outcome.name));
				}
			}
			for (const UScriptStruct* record : facts.structs())
			{
				for (const FieldFacts& field : fieldsOf(*record))
				{
					if (field.texts.empty())
					{
						missing.push_back(fmt::format("{}: {} does not say what {} means", facts.name, record->Name, field.name));
					}
				}
			}
		}
		for (const UEnum* values : enumerations())
		{
			for (const FEnumerator& value : values->Enumerators)
			{
				if (!*value.Comment)
				{
					missing.push_back(fmt::format("{} does not say what {} means", values->Name, value.Name));
				}
			}
		}
		return missing;
	}

	std::string pageName(const NodeFacts& facts)
	{
		return facts.name + ".html";
	}

	std::string pageName(const Example& example)
	{
		return fmt::format("example-{}.html", example.file.substr(0, example.file.rfind('.')));
	}

	std::string pageName(const Guide& guide)
	{
		return fmt::format("guide-{}.html", guide.name);
	}
} // namespace Program
