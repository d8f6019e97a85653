#include "Checks.h"

#include <algorithm>

namespace HeaderTool
{
	namespace
	{
		template <class Range>
		auto findByName(const Range& range, std::string_view name)
		{
			return std::find_if(range.begin(), range.end(), [name](const auto& entry) { return sameName(entry.name, name); });
		}

		/** @return the class and its reflected bases below UObject, the class itself first. */
		std::vector<const ClassDef*> withBases(const Symbols& symbols, const ClassDef& first)
		{
			std::vector<const ClassDef*> chain;
			// A class that derives from itself is for the compiler to refuse; here it only has to end.
			for (const ClassDef* c = &first; c && std::find(chain.begin(), chain.end(), c) == chain.end(); c = symbols.findClass(c->super))
			{
				chain.push_back(c);
			}
			return chain;
		}

		/** A name that another member of the class or one of a base has taken. */
		template <class Def>
		void checkMemberName(const Symbols& symbols, const ClassDef& owner, const Def& member)
		{
			const void* const self = &member;
			const auto isOther = [&](const auto& other) { return sameName(other.name, member.name) && &other != self; };
			for (const ClassDef* const c : withBases(symbols, owner))
			{
				if (std::any_of(c->functions.begin(), c->functions.end(), isOther) ||
					std::any_of(c->properties.begin(), c->properties.end(), isOther))
				{
					fail(member.line, "{} has another member '{}'; case does not tell names apart and there are no overloads", c->name,
						member.name);
				}
			}
		}

		void checkForScripts(const FunctionDef& function)
		{
			const bool isPure = function.specifiers.find("BlueprintPure") != nullptr;
			const Specifier* const category = function.specifiers.find("Category");
			if ((isPure || function.specifiers.find("BlueprintCallable")) && (!category || category->value.value_or("").empty()))
			{
				fail(function.line, "'{}' is for scripts and needs a Category", function.name);
			}
			const auto isOutput = [](const ParameterDef& p) { return p.type.isOutput(); };
			if (isPure && !function.result && std::none_of(function.parameters.begin(), function.parameters.end(), isOutput))
			{
				fail(function.line, "'{}' is BlueprintPure but gives no result", function.name);
			}
		}

		void checkReturn(const Symbols& symbols, const FunctionDef& function)
		{
			if (!function.result)
			{
				return;
			}
			const ParameterDef& result = *function.result;
			checkSpecifiers(result.specifiers, "UPARAM");
			const auto clash = findByName(function.parameters, result.name);
			if (clash != function.parameters.end())
			{
				fail(clash->line, "'{}' of '{}' is the name of the return value", clash->name, function.name);
			}
			const std::string problem = result.type.isOutput() ? fmt::format("'{}' is a reference that cannot be kept", spell(result.type))
															   : typeProblem(symbols, result.type, TypeUse::Parameter);
			if (!problem.empty())
			{
				fail(result.line, "return value of '{}': {}", function.name, problem);
			}
		}

		/** @return what is wrong with a parameter; empty when nothing is. */
		std::string parameterProblem(const Symbols& symbols, const ParameterDef& parameter)
		{
			if (parameter.specifiers.find("ref") && !parameter.type.isOutput())
			{
				return fmt::format("UPARAM(ref) needs a non-const reference, not '{}'", spell(parameter.type));
			}
			std::string problem = typeProblem(symbols, parameter.type, TypeUse::Parameter);
			const std::optional<DefaultDef>& value = parameter.defaultValue;
			if (problem.empty() && value && !suits(*value, parameter.type))
			{
				problem = fmt::format("the default '{}' cannot be given to '{}'", value->spelling, spell(parameter.type));
			}
			return problem;
		}

		void checkAgainstProperties(const Symbols& symbols, const ClassDef& owner, const FunctionDef& function)
		{
			for (const ParameterDef& parameter : function.parameters)
			{
				for (const ClassDef* const c : withBases(symbols, owner))
				{
					if (findByName(c->properties, parameter.name) != c->properties.end())
					{
						fail(parameter.line, "parameter '{}' of '{}' has the name of a reflected property of {}", parameter.name,
							function.name, c->name);
					}
				}
			}
		}

		void checkProperty(const Symbols& symbols, const PropertyDef& property, const std::string& owner, bool isClass)
		{
			if (property.specifiers.find("BlueprintAssignable") && !(isClass && symbols.findDelegate(property.type.name)))
			{
				fail(property.line, "'{}': BlueprintAssignable is for members of classes that are dynamic multicast delegates",
					property.name);
			}
			if (property.isField() && isClass)
			{
				fail(property.line, "'{}': in this host scripts see the fields of structs only", property.name);
			}
			if (property.specifiers.find("BlueprintReadOnly") && property.specifiers.find("BlueprintReadWrite"))
			{
				fail(property.line, "'{}' cannot be both BlueprintReadOnly and BlueprintReadWrite", property.name);
			}
			const TypeUse use = property.isField() ? TypeUse::Parameter : TypeUse::Property;
			if (const std::string problem = typeProblem(symbols, property.type, use); !problem.empty())
			{
				fail(property.line, "property '{}' of '{}': {}", property.name, owner, problem);
			}
		}
	} // namespace

	void checkParameters(const Symbols& symbols, const std::vector<ParameterDef>& parameters, const std::string& owner)
	{
		for (auto parameter = parameters.begin(); parameter != parameters.end(); ++parameter)
		{
			checkSpecifiers(parameter->specifiers, "UPARAM");
			if (const std::string problem = parameterProblem(symbols, *parameter); !problem.empty())
			{
				fail(parameter->line, "parameter '{}' of '{}': {}", parameter->name, owner, problem);
			}
			if (findByName(parameters, parameter->name) != parameter)
			{
				fail(parameter->line, "'{}' has two parameters called '{}'", owner, parameter->name);
			}
		}
	}

	void checkMembers(const Symbols& symbols, const ClassDef& owner, bool isClass)
	{
		for (const FunctionDef& function : owner.functions)
		{
			checkSpecifiers(function.specifiers, "UFUNCTION");
			checkMemberName(symbols, owner, function);
			checkForScripts(function);
			checkReturn(symbols, function);
			checkParameters(symbols, function.parameters, function.name);
			checkAgainstProperties(symbols, owner, function);
		}
		for (const PropertyDef& property : owner.properties)
		{
			checkSpecifiers(property.specifiers, "UPROPERTY");
			checkMemberName(symbols, owner, property);
			checkProperty(symbols, property, owner.name, isClass);
		}
	}
} // namespace HeaderTool
