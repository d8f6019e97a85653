#include "Lab/Script/Catalogue.h"

#include "Lab/Script/Entries.h"
#include "Lab/Script/Options.h"

#include <algorithm>

namespace Lab
{
	namespace
	{
		bool knows(const std::vector<OptionEntry>& options, const std::string& name)
		{
			return std::any_of(options.begin(), options.end(), [&](const OptionEntry& option) { return option.name == name; });
		}

		std::string namesOf(const std::vector<OptionEntry>& options)
		{
			std::string names;
			for (const OptionEntry& option : options)
			{
				names += option.name + ", ";
			}
			return names;
		}

		const CatalogueEntry& entryOf(const std::string& name)
		{
			const std::vector<CatalogueEntry>& all = catalogue();
			const auto found = std::find_if(all.begin(), all.end(), [&](const CatalogueEntry& entry) { return entry.name == name; });
			return found == all.end() ? throw std::invalid_argument("there is no behaviour '" + name + '\'') : *found;
		}

		/** Takes the common options out and checks the others. */
		nlohmann::json ownOptions(const CatalogueEntry& entry, const nlohmann::json& options)
		{
			nlohmann::json own = nlohmann::json::object();
			for (const auto& [name, value] : options.items())
			{
				if (knows(commonOptions(), name))
				{
					continue;
				}
				if (!entry.takesAnyOption && !knows(entry.options, name))
				{
					throw std::invalid_argument(
						entry.name + ": there is no option '" + name + "', only " + namesOf(entry.options) + "requests, chance and seed");
				}
				own[name] = value;
			}
			return own;
		}
	} // namespace

	const std::vector<CatalogueEntry>& catalogue()
	{
		static const std::vector<CatalogueEntry> all = []
		{
			std::vector<CatalogueEntry> both = bodyEntries();
			std::vector<CatalogueEntry> faults = faultEntries();
			both.insert(both.end(), faults.begin(), faults.end());
			return both;
		}();
		return all;
	}

	const std::vector<OptionEntry>& commonOptions()
	{
		static const std::vector<OptionEntry> all{{"requests", "only the first ones of a method and target"},
			{"chance", "only a share of the requests, 0 to 1, the same ones in each run"}, {"seed", "of that choice"}};
		return all;
	}

	Behaviour makeBehaviour(const std::string& name, const nlohmann::json& options)
	{
		const CatalogueEntry& entry = entryOf(name);
		const Options common(name, options);
		Behaviour made = entry.make(Options(name, ownOptions(entry, options)));
		made = common.has("requests") ? onlyFirst(common.whole("requests"), made) : made;
		return common.has("chance") ? sometimes(common.number("chance"), made, static_cast<unsigned>(common.whole("seed"))) : made;
	}
} // namespace Lab
