#include "FunctionNames.h"

#include "Commands.h"
#include "NearestName.h"

#include <fmt/format.h>

namespace Program
{
	namespace
	{
		std::string suggestFunction(const std::string& name)
		{
			const bool hasClass = name.find('.') != std::string::npos;
			std::vector<std::string> names;
			for (const Script::Function& function : Script::functions())
			{
				names.push_back(hasClass ? function.name : function.function->Name);
			}
			const std::string nearest = Script::suggestion(name, names);
			return nearest.empty() ? "; 'corvane nodes' lists them all" : nearest;
		}
	} // namespace

	const Script::Function& functionNamed(const std::string& name)
	{
		const std::vector<const Script::Function*> found = Script::findFunctions(name);
		if (found.empty())
		{
			throw UsageError(fmt::format("there is no function '{}'{}", name, suggestFunction(name)));
		}
		if (found.size() > 1)
		{
			throw UsageError(fmt::format("'{}' is ambiguous: write {} or {}", name, found[0]->name, found[1]->name));
		}
		return *found.front();
	}

	std::vector<std::string> inputNames(const Script::Function& function)
	{
		std::vector<std::string> names;
		for (const FParameter& parameter : function.function->Parameters)
		{
			if (Script::isInput(parameter.Kind))
			{
				names.emplace_back(parameter.Name);
			}
		}
		return names;
	}
} // namespace Program
