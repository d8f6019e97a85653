#pragma once

#include "Lab/Plans/Behaviour.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace Lab
{
	class Options;

	struct OptionEntry
	{
		std::string name;
		std::string text;
		bool isForScripts = false; // it names a file, which is nothing that a request may do
	};

	/** A behaviour as scripts and requests name it. */
	struct CatalogueEntry
	{
		std::string name;
		std::string text;
		std::vector<OptionEntry> options;
		std::function<Behaviour(const Options&)> make;
		bool makesBody = true; // false = it changes what others have made
		bool takesAnyOption = false; // their names mean something by themselves
		bool hasMemory = false; // one and the same answers all requests
	};

	const std::vector<CatalogueEntry>& catalogue();
	/** What every behaviour takes besides its own. */
	const std::vector<OptionEntry>& commonOptions();

	/**
	 * @param options  an object.
	 * @return the behaviour of that name. Throws std::invalid_argument for an unknown name, option or value.
	 */
	Behaviour makeBehaviour(const std::string& name, const nlohmann::json& options);
} // namespace Lab
