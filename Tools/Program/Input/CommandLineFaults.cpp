#include "CommandLineFaults.h"

#include "InputError.h"
#include "NearestName.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Program
{
	namespace
	{
		std::vector<std::string> verbsOf(const CLI::App& app)
		{
			std::vector<std::string> names;
			for (const CLI::App* verb : app.get_subcommands(nullptr))
			{
				names.push_back(verb->get_name());
			}
			return names;
		}

		std::vector<std::string> longOptionsOf(const CLI::App& verb)
		{
			std::vector<std::string> names;
			for (const CLI::Option* option : verb.get_options())
			{
				for (const std::string& name : option->get_lnames())
				{
					names.push_back("--" + name);
				}
			}
			return names;
		}

		/** @param word  that the parser has no place for. @param verb  the one that was given. */
		std::string explainWord(const std::string& word, const CLI::App& verb)
		{
			const std::string name = word.substr(0, word.find('='));
			if (!word.starts_with('-'))
			{
				return fmt::format("'{}' is more than {} takes", word, verb.get_name());
			}
			if (verb.get_option_no_throw(name))
			{
				return fmt::format("{} belongs behind '{}'", name, verb.get_name());
			}
			return fmt::format("unknown option {}{}", name, Reflect::suggestion(name, longOptionsOf(verb)));
		}
	} // namespace

	void checkVerb(const CLI::App& app, const std::string& word)
	{
		const std::vector<std::string> verbs = verbsOf(app);
		if (word.empty())
		{
			throw Reflect::InputError(fmt::format("what shall be done? One of: {}; 'corvane help' tells more", fmt::join(verbs, ", ")));
		}
		if (!word.starts_with('-') && std::find(verbs.begin(), verbs.end(), word) == verbs.end())
		{
			const std::string meant = Reflect::suggestion(word, verbs);
			throw Reflect::InputError(fmt::format(
				"there is no verb '{}'{}", word, meant.empty() ? fmt::format("; there are {}", fmt::join(verbs, ", ")) : meant));
		}
	}

	std::string explain(const CLI::App& app, const CLI::ParseError& error)
	{
		const std::vector<CLI::App*> given = app.get_subcommands();
		const CLI::App& verb = given.empty() ? app : *given.front();
		const std::vector<std::string> words = app.remaining(true);
		if (dynamic_cast<const CLI::ExtrasError*>(&error) && !words.empty())
		{
			return explainWord(words.front(), verb);
		}
		return fmt::format("{}; 'corvane help{}' tells more", error.what(), given.empty() ? "" : " " + verb.get_name());
	}
} // namespace Program
