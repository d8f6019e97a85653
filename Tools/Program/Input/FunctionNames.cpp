#include "FunctionNames.h"

#include "InputError.h"
#include "NearestName.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		std::vector<std::string> classNames()
		{
			std::vector<std::string> names;
			for (const Reflect::Function& function : Reflect::functions())
			{
				names.emplace_back(function.owner->GetName());
			}
			return names;
		}

		bool holds(const std::vector<std::string>& names, std::string_view name)
		{
			return std::any_of(names.begin(), names.end(), [&](const std::string& each) { return Reflect::equalNames(each, name); });
		}

		/** @return what is wrong with a name that no function has. */
		std::string faultOf(const std::string& name, const std::vector<std::string>& alsoMeant)
		{
			const size_t dot = name.find('.');
			const std::vector<std::string> classes = classNames();
			if (dot != std::string::npos && !holds(classes, name.substr(0, dot)))
			{
				return fmt::format("there is no class '{}'{}", name.substr(0, dot), Reflect::suggestion(name.substr(0, dot), classes));
			}
			if (holds(classes, name))
			{
				return fmt::format("'{}' is a class; 'corvane nodes' lists its functions", name);
			}
			std::vector<std::string> names = alsoMeant;
			for (const Reflect::Function& function : Reflect::functions())
			{
				names.push_back(dot != std::string::npos ? function.name : function.function->Name);
			}
			const std::string nearest = Reflect::suggestion(name, names);
			return fmt::format("there is no function '{}'{}", name, nearest.empty() ? "; 'corvane nodes' lists them all" : nearest);
		}
	} // namespace

	const Reflect::Function& functionNamed(const std::string& name, const std::vector<std::string>& alsoMeant)
	{
		const std::vector<const Reflect::Function*> found = Reflect::findFunctions(name);
		if (found.empty())
		{
			throw Reflect::InputError(faultOf(name, alsoMeant));
		}
		if (found.size() > 1)
		{
			throw Reflect::InputError(fmt::format("'{}' is ambiguous: write {} or {}", name, found[0]->name, found[1]->name));
		}
		return *found.front();
	}
} // namespace Program
