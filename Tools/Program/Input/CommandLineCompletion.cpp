#include "CommandLineCompletion.h"

#include "CallInput.h"
#include "CorvaneBPLibrary.h"
#include "Reflection.h"

#include <algorithm>

namespace Program
{
	namespace
	{
		using Words = std::vector<std::string>;

		bool beginsWith(std::string_view text, std::string_view beginning)
		{
			return Reflect::equalNames(text.substr(0, beginning.size()), beginning);
		}

		Words only(const Words& candidates, std::string_view beginning)
		{
			Words fitting;
			for (const std::string& candidate : candidates)
			{
				if (beginsWith(candidate, beginning))
				{
					fitting.push_back(candidate);
				}
			}
			return fitting;
		}

		/** Quotes are looked through only as far as it takes to know words apart. */
		Words split(const std::string& line)
		{
			Words words(1);
			char quote = 0;
			for (const char c : line)
			{
				if (quote == 0 && c == ' ')
				{
					words.emplace_back();
				}
				else if ((c == '"' || c == '\'') && (quote == 0 || quote == c))
				{
					quote = quote == 0 ? c : '\0';
				}
				else
				{
					words.back() += c;
				}
			}
			std::erase_if(words, [&](const std::string& word) { return word.empty() && &word != &words.back(); });
			return words;
		}

		/** Names without a class, then classes; with a class, what belongs to it. */
		Words functionNames(const std::string& beginning)
		{
			const bool hasClass = beginning.find('.') != std::string::npos;
			Words names;
			for (const Reflect::Function& function : Reflect::functions())
			{
				names.push_back(hasClass ? function.name : function.function->Name);
			}
			for (const Reflect::Function& function : Reflect::functions())
			{
				const std::string owner = std::string(function.owner->GetName()) + ".";
				if (!hasClass && std::find(names.begin(), names.end(), owner) == names.end())
				{
					names.push_back(owner);
				}
			}
			return only(names, beginning);
		}

		/** What is listed besides functions. */
		Words eventNames(const std::string& beginning)
		{
			Words names;
			for (const FMulticastDelegateProperty* event : Reflect::eventsOf(UCorvaneBPLibrary::StaticClass()))
			{
				names.emplace_back(event->Name);
			}
			return only(names, beginning);
		}

		Words nodeNames(const std::string& beginning)
		{
			Words names = functionNames(beginning);
			const Words events = eventNames(beginning);
			names.insert(names.end(), events.begin(), events.end());
			return names;
		}

		Words valuesOf(const FPropertyType& type)
		{
			return type.Kind == EPropertyKind::Bool ? Words{"true", "false"} : Reflect::valueNames(type);
		}

		Words pinValues(const Reflect::Function& function, const std::string& pin, const std::string& beginning)
		{
			for (const FParameter& parameter : function.function->Parameters)
			{
				if (Reflect::isInput(parameter.Kind) && Reflect::equalNames(parameter.Name, pin))
				{
					Words values = only(valuesOf(parameter.Type()), beginning);
					std::transform(
						values.begin(), values.end(), values.begin(), [&](const std::string& value) { return pin + "=" + value; });
					return values;
				}
			}
			return {};
		}

		Words pinsLeft(const Reflect::Function& function, const Words& arguments)
		{
			Words pins;
			for (const std::string& name : settablePins(*function.function))
			{
				const auto isSet = [&](const std::string& argument) { return beginsWith(argument, name + "="); };
				if (std::none_of(arguments.begin(), arguments.end(), isSet))
				{
					pins.push_back(name + "=");
				}
			}
			return pins;
		}

		/** @param arguments  after the verb; the last one is being typed. @return null while the function is not named. */
		const Reflect::Function* namedFunction(const Words& arguments)
		{
			for (auto argument = arguments.begin(); argument != arguments.end() - 1; ++argument)
			{
				const std::vector<const Reflect::Function*> found = Reflect::findFunctions(*argument);
				if (found.size() == 1)
				{
					return found.front();
				}
			}
			return nullptr;
		}

		Words callCandidates(const Words& arguments)
		{
			const std::string& word = arguments.back();
			const Reflect::Function* const function = namedFunction(arguments);
			const size_t equals = word.find('=');
			if (!function)
			{
				return functionNames(word);
			}
			return equals == std::string::npos ? only(pinsLeft(*function, arguments), word)
											   : pinValues(*function, word.substr(0, equals), word.substr(equals + 1));
		}

		Words options(const std::string& verb)
		{
			if (verb == "nodes")
			{
				return {"--json", "--html", "--drive-base", "--help"};
			}
			if (verb == "call")
			{
				return {"--json", "--body", "--output", "--header", "--timeout", "--verbose", "--progress", "--project", "--base",
					"--drive-base", "--help"};
			}
			if (verb == "lab")
			{
				return {"--port", "--listen-on", "--tls", "--run", "--record", "--to", "--keep-secrets", "--replay", "--speed", "--project",
					"--base", "--drive-base", "--help"};
			}
			if (verb == "get")
			{
				return {"--input", "--output", "--dir", "--header", "--hash", "--limit-rate", "--if-exists", "--jobs", "--no-resume",
					"--json", "--quiet", "--verbose", "--help"};
			}
			if (verb == "follow")
			{
				return {
					"--header", "--data", "--last-id", "--event", "--json", "--no-reconnect", "--max", "--quiet", "--verbose", "--help"};
			}
			if (verb == "put")
			{
				return {"--form", "--field", "--tus", "--request", "--header", "--hash", "--may-repeat", "--json", "--quiet", "--verbose",
					"--help"};
			}
			return verb == "run" ? Words{"--connections", "--project", "--base", "--drive-base", "--help"}
								 : Words{"--drive-base", "--help"};
		}

		bool takesValue(const std::string& option)
		{
			static const Words taking = {"--output", "-o", "--header", "-H", "--timeout", "--connections", "--project", "--base",
				"--drive-base", "--html", "--dir", "-d", "--hash", "--limit-rate", "--if-exists", "--jobs", "-j", "--port", "--listen-on",
				"--tls", "--run", "--record", "--to", "--replay", "--speed", "--form", "--field", "--request", "-X", "--data", "--last-id",
				"--event", "--max"};
			return std::find(taking.begin(), taking.end(), option) != taking.end();
		}
	} // namespace

	std::vector<std::string> completions(const std::string& line)
	{
		static const Words verbs = {"run", "call", "get", "put", "follow", "nodes", "demo", "lab", "completion", "help"};
		const Words words = split(line);
		const std::string& word = words.back();
		if (words.size() <= 2)
		{
			Words first = verbs;
			first.insert(first.end(), {"--help", "--version"});
			return only(first, word);
		}
		const std::string& verb = words[1];
		const Words arguments(words.begin() + 2, words.end());
		if (takesValue(words[words.size() - 2]))
		{
			return {};
		}
		if (word.starts_with('-'))
		{
			return only(options(verb), word);
		}
		if (verb == "help")
		{
			return arguments.size() == 1 ? only(verbs, word) : Words();
		}
		return verb == "call" ? callCandidates(arguments) : verb == "nodes" && arguments.size() == 1 ? nodeNames(word) : Words();
	}
} // namespace Program
