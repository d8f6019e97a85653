#include "Checks.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <type_traits>

namespace HeaderTool
{
	namespace
	{
		constexpr std::array<std::string_view, 4> generatedMembers = {"StaticClass", "StaticStruct", "Super", "ThisClass"};

		template <class Range>
		auto findByName(const Range& range, std::string_view name)
		{
			return std::find_if(range.begin(), range.end(), [name](const auto& entry) { return sameName(entry.name, name); });
		}

		/** @return whether the first member of that name is another one than `self`. */
		template <class Def>
		bool isTaken(const std::vector<Def>& members, const std::string& name, const void* self)
		{
			const auto found = findByName(members, name);
			return found != members.end() && &*found != self;
		}

		/** A name that a generated member, another member of the class or one of a base has taken. */
		template <class Def>
		void checkMemberName(const CheckContext& context, const ClassDef& owner, const Def& member)
		{
			if (std::find(generatedMembers.begin(), generatedMembers.end(), member.name) != generatedMembers.end())
			{
				context.report(member.line, fmt::format("'{}' is the name of a generated member", member.name));
			}
			for (const ClassDef* const c : context.symbols.withBases(owner))
			{
				const bool isFunction = isTaken(c->functions, member.name, &member);
				// Within one class a function and a property of the same name are reported once, at the property.
				const bool skipsProperties = std::is_same_v<Def, FunctionDef> && c == &owner;
				if (isFunction || (!skipsProperties && isTaken(c->properties, member.name, &member)))
				{
					context.report(member.line,
						fmt::format("'{}' is already a reflected {} of {}; case does not tell names apart and there are no overloads",
							member.name, isFunction ? "function" : "property", c->name));
					return;
				}
			}
		}

		void checkFunctionForm(const CheckContext& context, const FunctionDef& function)
		{
			if (function.isStatic && (function.isVirtual || function.isConst))
			{
				context.report(
					function.line, fmt::format("'{}' cannot be static and {}", function.name, function.isVirtual ? "virtual" : "const"));
			}
			const bool isPure = function.specifiers.find("BlueprintPure") != nullptr;
			const Specifier* const category = function.specifiers.find("Category");
			if ((isPure || function.specifiers.find("BlueprintCallable")) && (!category || category->value.value_or("").empty()))
			{
				context.report(function.line, fmt::format("'{}' is for scripts and needs a Category", function.name));
			}
			const bool hasResult = function.returnType || std::any_of(function.parameters.begin(), function.parameters.end(),
															  [](const ParameterDef& p) { return p.type.isOutput(); });
			if (isPure && !hasResult)
			{
				context.report(function.line, fmt::format("'{}' is BlueprintPure but gives no result", function.name));
			}
		}

		void checkReturn(const CheckContext& context, const FunctionDef& function)
		{
			checkSpecifiers(context, function.returnSpecifiers, "UPARAM", function.name);
			if (!function.returnType)
			{
				return;
			}
			const auto clash = findByName(function.parameters, "ReturnValue");
			if (clash != function.parameters.end())
			{
				context.report(clash->line, fmt::format("'{}' of '{}' is the name of the return value", clash->name, function.name));
			}
			const std::optional<std::string> problem =
				function.returnType->isOutput() ? fmt::format("'{}' is a reference that cannot be kept", spell(*function.returnType))
												: typeProblem(context, *function.returnType, TypeUse::Parameter);
			if (problem)
			{
				context.report(function.returnType->line, fmt::format("return value of '{}': {}", function.name, *problem));
			}
		}

		void checkParameter(const CheckContext& context, const ParameterDef& parameter, const std::string& owner)
		{
			const auto report = [&](const std::string& problem)
			{ context.report(parameter.line, fmt::format("parameter '{}' of '{}': {}", parameter.name, owner, problem)); };
			checkSpecifiers(context, parameter.specifiers, "UPARAM", parameter.name);
			if (parameter.specifiers.find("ref") && !parameter.type.isOutput())
			{
				report(fmt::format("UPARAM(ref) needs a non-const reference, not '{}'", spell(parameter.type)));
			}
			if (const auto problem = typeProblem(context, parameter.type, TypeUse::Parameter))
			{
				report(*problem);
			}
			else if (parameter.defaultValue)
			{
				if (const auto unfit = defaultProblem(context, parameter))
				{
					report(*unfit);
				}
			}
		}

		void checkAgainstProperties(const CheckContext& context, const ClassDef& owner, const FunctionDef& function)
		{
			for (const ParameterDef& parameter : function.parameters)
			{
				for (const ClassDef* const c : context.symbols.withBases(owner))
				{
					if (findByName(c->properties, parameter.name) != c->properties.end())
					{
						context.report(parameter.line, fmt::format("parameter '{}' of '{}' has the name of a reflected property of {}",
														   parameter.name, function.name, c->name));
					}
				}
			}
		}

		void checkAssignable(const CheckContext& context, const PropertyDef& property, bool isClass)
		{
			const Found<DelegateDef> found = context.symbols.findDelegate(property.type.name);
			if (!isClass)
			{
				context.report(property.line, fmt::format("'{}': BlueprintAssignable is for members of classes", property.name));
			}
			else if (!found && context.symbols.areComplete())
			{
				context.report(property.line, fmt::format("'{}': BlueprintAssignable needs a dynamic multicast delegate, '{}' is none",
												  property.name, spell(property.type)));
			}
		}
	} // namespace

	void checkParameters(const CheckContext& context, const std::vector<ParameterDef>& parameters, const std::string& owner)
	{
		bool hasDefault = false;
		for (auto parameter = parameters.begin(); parameter != parameters.end(); ++parameter)
		{
			checkParameter(context, *parameter, owner);
			if (std::any_of(parameters.begin(), parameter, [&](const ParameterDef& p) { return sameName(p.name, parameter->name); }))
			{
				context.report(parameter->line, fmt::format("'{}' has two parameters called '{}'", owner, parameter->name));
			}
			if (hasDefault && !parameter->defaultValue)
			{
				context.report(parameter->line,
					fmt::format("parameter '{}' of '{}' needs a default, since one before it has one", parameter->name, owner));
			}
			hasDefault = hasDefault || parameter->defaultValue;
		}
	}

	void checkFunctions(const CheckContext& context, const ClassDef& owner)
	{
		for (const FunctionDef& function : owner.functions)
		{
			checkSpecifiers(context, function.specifiers, "UFUNCTION", function.name);
			checkMemberName(context, owner, function);
			checkFunctionForm(context, function);
			checkReturn(context, function);
			checkParameters(context, function.parameters, function.name);
			checkAgainstProperties(context, owner, function);
		}
		for (const PropertyDef& property : owner.properties)
		{
			checkMemberName(context, owner, property);
		}
	}

	void checkProperties(const CheckContext& context, const std::vector<PropertyDef>& properties, const std::string& owner, bool isClass)
	{
		for (const PropertyDef& property : properties)
		{
			checkSpecifiers(context, property.specifiers, "UPROPERTY", property.name);
			const bool isAssignable = property.specifiers.find("BlueprintAssignable") != nullptr;
			if (isAssignable)
			{
				checkAssignable(context, property, isClass);
			}
			const bool isDelegate = context.symbols.findDelegate(property.type.name).def != nullptr;
			if (!isAssignable || isDelegate)
			{
				if (const auto problem = typeProblem(context, property.type, TypeUse::Property))
				{
					context.report(property.line, fmt::format("property '{}' of '{}': {}", property.name, owner, *problem));
				}
			}
		}
	}
} // namespace HeaderTool
