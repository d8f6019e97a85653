#include "FunctionNames.h"

#include "InputError.h"
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
			for (const Reflect::Function& function : Reflect::functions())
			{
				names.push_back(hasClass ? function.name : function.function->Name);
			}
			const std::string nearest = Reflect::suggestion(name, names);
			return nearest.empty() ? "; 'corvane nodes' lists them all" : nearest;
		}
	} // namespace

	const Reflect::Function& functionNamed(const std::string& name)
	{
		const std::vector<const Reflect::Function*> found = Reflect::findFunctions(name);
		if (found.empty())
		{
			throw Reflect::InputError(fmt::format("there is no function '{}'{}", name, suggestFunction(name)));
		}
		if (found.size() > 1)
		{
			throw Reflect::InputError(fmt::format("'{}' is ambiguous: write {} or {}", name, found[0]->name, found[1]->name));
		}
		return *found.front();
	}
} // namespace Program
