#include "Lab/Script/ReadyOrigin.h"

#include "Lab/Behaviours/Answers.h"
#include "Lab/Origin.h"
#include "Lab/Script/Catalogue.h"

#include <algorithm>
#include <map>

namespace Lab
{
	namespace
	{
		std::string describe(const std::vector<OptionEntry>& options)
		{
			std::string lines;
			for (const OptionEntry& option : options)
			{
				lines += option.isForScripts ? "" : "    " + option.name + "  " + option.text + '\n';
			}
			return lines;
		}

		std::string listing()
		{
			std::string text = "Each path does what its name says, with the options of its query: /drop?after=1000\n"
							   "Options of a second behaviour have its name before them: /file?size=5000&rate.bytes=1000\n"
							   "/lab/log tells the requests so far as JSON; DELETE forgets them.\n\n";
			for (const CatalogueEntry& entry : catalogue())
			{
				text += '/' + entry.name + "  " + entry.text + '\n' + describe(entry.options);
			}
			return text + "\nAll of them:\n" + describe(commonOptions());
		}

		/** What names a file of this machine is not for those who ask. */
		void refuseFiles(const std::string& behaviour, const nlohmann::json& options)
		{
			for (const CatalogueEntry& entry : catalogue())
			{
				for (const OptionEntry& option : entry.options)
				{
					if (entry.name == behaviour && option.isForScripts && options.contains(option.name))
					{
						throw std::invalid_argument(behaviour + ": " + option.name + " is for scripts only");
					}
				}
			}
		}

		Behaviour behaviourOf(const CatalogueEntry& entry, std::string_view query)
		{
			std::vector<std::pair<std::string, nlohmann::json>> wanted{{entry.name, nlohmann::json::object()}};
			for (const Header& pair : parsePairs(query))
			{
				const std::size_t dot = pair.name.find('.');
				const std::string owner = dot == pair.name.npos ? entry.name : pair.name.substr(0, dot);
				auto found = std::find_if(wanted.begin(), wanted.end(), [&](const auto& each) { return each.first == owner; });
				found = found == wanted.end() ? wanted.insert(found, {owner, nlohmann::json::object()}) : found;
				found->second[dot == pair.name.npos ? pair.name : pair.name.substr(dot + 1)] = pair.value;
			}
			std::vector<Behaviour> made;
			if (!entry.makesBody)
			{
				made.push_back(makeBehaviour("file", nlohmann::json::object()));
			}
			for (const auto& [name, options] : wanted)
			{
				refuseFiles(name, options);
				made.push_back(makeBehaviour(name, options));
			}
			return Behaviour(std::move(made));
		}

		Behaviour forRequest(const CatalogueEntry& entry, const Request& request)
		{
			try
			{
				return behaviourOf(entry, request.query());
			}
			catch (const std::exception& fault)
			{
				return status({.code = 400, .text = std::string(fault.what()) + '\n'});
			}
		}
	} // namespace

	void makeReady(Origin& origin)
	{
		origin.at("/", listing());
		for (const CatalogueEntry& entry : catalogue())
		{
			if (entry.hasMemory)
			{
				origin.at('/' + entry.name + '*', makeBehaviour(entry.name, nlohmann::json::object()));
				continue;
			}
			origin.at('/' + entry.name,
				Behaviour([&entry](const Request& request, Plan& plan) { forRequest(entry, request).answer(request, plan); },
					[&entry](const Request& request, Intake& intake) { forRequest(entry, request).take(request, intake); }));
		}
	}
} // namespace Lab
