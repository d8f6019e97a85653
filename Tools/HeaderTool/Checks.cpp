#include "Checks.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** The engine's prefixes tell it what a name stands for: the letter, then a name that begins like a name. */
		void checkPrefix(const CheckContext& context, const std::string& name, char prefix, int line, std::string_view what)
		{
			if (name.size() < 2 || name[0] != prefix)
			{
				context.report(line, fmt::format("the name of the {} '{}' must begin with {}", what, name, prefix));
			}
		}

		void checkClass(const CheckContext& context, const ClassDef& def)
		{
			checkPrefix(context, def.name, 'U', def.line, "class");
			checkSpecifiers(context, def.specifiers, "UCLASS", def.name);
			const Found<ClassDef> super = context.symbols.findClass(def.super);
			if (def.super.empty())
			{
				context.report(def.line, fmt::format("'{}' must derive from UObject or a class that does", def.name));
			}
			else if (!super && def.super != "UObject" && context.symbols.areComplete())
			{
				context.report(def.line, fmt::format("the base '{}' of '{}' is not a reflected class", def.super, def.name));
			}
			else if (super && !context.symbols.isVisible(super, context.header, def.line))
			{
				context.report(def.line, fmt::format("the base '{}' of '{}' must be declared before it", def.super, def.name));
			}
			for (const std::string& base : def.otherBases)
			{
				if (base == "UObject" || context.symbols.findClass(base))
				{
					context.report(def.line, fmt::format("'{}' may have one reflected base only, '{}' is a second one", def.name, base));
				}
			}
			checkProperties(context, def.properties, def.name, true);
			checkFunctions(context, def);
		}

		void checkStruct(const CheckContext& context, const StructDef& def)
		{
			checkPrefix(context, def.name, 'F', def.line, "struct");
			checkSpecifiers(context, def.specifiers, "USTRUCT", def.name);
			const Found<StructDef> super = context.symbols.findStruct(def.super);
			const bool isKnown = super && context.symbols.isVisible(super, context.header, def.line);
			if (!def.super.empty() && !isKnown && (super || context.symbols.areComplete()))
			{
				context.report(
					def.line, fmt::format("the base '{}' of '{}' is not a reflected struct declared before it", def.super, def.name));
			}
			checkProperties(context, def.properties, def.name, false);
			for (auto property = def.properties.begin(); property != def.properties.end(); ++property)
			{
				if (std::any_of(def.properties.begin(), property, [&](const PropertyDef& p) { return sameName(p.name, property->name); }))
				{
					context.report(property->line, fmt::format("'{}' is already a reflected property of {}", property->name, def.name));
				}
			}
		}

		void checkEnumerators(const CheckContext& context, const EnumDef& def)
		{
			for (auto enumerator = def.enumerators.begin(); enumerator != def.enumerators.end(); ++enumerator)
			{
				checkSpecifiers(context, enumerator->specifiers, "UMETA", enumerator->name);
				if (enumerator->value < 0 || enumerator->value > UINT8_MAX)
				{
					context.report(
						enumerator->line, fmt::format("the value {} of '{}' is outside 0..255", enumerator->value, enumerator->name));
				}
				const auto clash = std::find_if(def.enumerators.begin(), enumerator,
					[&](const EnumeratorDef& e) { return sameName(e.name, enumerator->name) || e.value == enumerator->value; });
				if (clash != enumerator)
				{
					const bool isName = sameName(clash->name, enumerator->name);
					context.report(enumerator->line,
						isName ? fmt::format("{} has '{}' twice", def.name, enumerator->name)
							   : fmt::format("'{}' has the value {} of '{}'", enumerator->name, enumerator->value, clash->name));
				}
			}
		}

		void checkEnum(const CheckContext& context, const EnumDef& def)
		{
			checkSpecifiers(context, def.specifiers, "UENUM", def.name);
			if (!def.isScoped || def.base != "uint8")
			{
				context.report(def.line, fmt::format("'{}' must be an 'enum class' based on uint8", def.name));
			}
			if (def.enumerators.empty())
			{
				context.report(def.line, fmt::format("'{}' has no enumerators", def.name));
			}
			checkEnumerators(context, def);
		}

		void checkDelegate(const CheckContext& context, const DelegateDef& def)
		{
			checkPrefix(context, def.name, 'F', def.line, "delegate");
			if (def.parameters.size() != static_cast<size_t>(def.declaredCount))
			{
				context.report(def.line,
					fmt::format("'{}' has {} parameters, its macro is for {}", def.name, def.parameters.size(), def.declaredCount));
			}
			for (const ParameterDef& parameter : def.parameters)
			{
				if (parameter.type.isOutput())
				{
					context.report(parameter.line,
						fmt::format("parameter '{}' of '{}': delegates take no non-const references", parameter.name, def.name));
				}
			}
			checkParameters(context, def.parameters, def.name);
		}
	} // namespace

	void check(const std::vector<HeaderDef>& headers, Diagnostics& diagnostics)
	{
		const Symbols symbols(headers);
		for (const HeaderDef& header : headers)
		{
			const CheckContext context{headers, symbols, header, diagnostics};
			const auto checkAll = [&](const auto& list, auto checkOne)
			{ std::for_each(list.begin(), list.end(), [&](const auto& def) { checkOne(context, def); }); };
			checkFile(context);
			if (!header.isReference)
			{
				checkEngineNames(context);
			}
			checkAll(header.enums, checkEnum);
			checkAll(header.structs, checkStruct);
			checkAll(header.delegates, checkDelegate);
			checkAll(header.classes, checkClass);
		}
		checkClashes(headers, diagnostics);
	}
} // namespace HeaderTool
