#include "Checks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		using Problem = std::optional<std::string>;

		constexpr std::array<std::string_view, 7> supported = {"bool", "uint8", "int32", "int64", "float", "FString", "FDateTime"};

		/** The engine's scripts hold these, this host's do not. */
		constexpr std::array<std::string_view, 12> unavailable = {"double", "FName", "FText", "TSet", "FGuid", "FTimespan", "FVector",
			"TSubclassOf", "TSoftObjectPtr", "TSoftClassPtr", "TScriptInterface", "TEnumAsByte"};

		/** Members may have these types when only the collector looks at them. */
		constexpr std::array<std::string_view, 7> memberOnly = {
			"uint16", "uint32", "uint64", "int8", "int16", "TWeakObjectPtr", "TObjectPtr"};

		constexpr std::pair<std::string_view, std::string_view> replacements[] = {{"int", "int32"}, {"unsigned int", "int32"},
			{"long", "int64"}, {"long long", "int64"}, {"size_t", "int64"}, {"char", "uint8"}, {"unsigned char", "uint8"},
			{"std::string", "FString"}, {"TCHAR", "FString"}, {"ANSICHAR", "FString"}, {"FStringView", "FString"}};

		template <class List>
		bool contains(const List& list, std::string_view name)
		{
			return std::find(std::begin(list), std::end(list), name) != std::end(list);
		}

		std::string unknownType(const std::string& name)
		{
			const auto better =
				std::find_if(std::begin(replacements), std::end(replacements), [&](const auto& pair) { return pair.first == name; });
			return better == std::end(replacements) ? fmt::format("scripts cannot hold the type '{}'", name)
													: fmt::format("scripts cannot hold the type '{}', write {}", name, better->second);
		}

		Problem unknown(const CheckContext& context, const std::string& name)
		{
			return context.symbols.areComplete() ? Problem(unknownType(name)) : std::nullopt;
		}

		/** A struct or enumeration must be declared before it is used by value. */
		template <class Def>
		Problem visibilityProblem(const CheckContext& context, const Found<Def>& found, int line)
		{
			if (context.symbols.isVisible(found, context.header, line))
			{
				return std::nullopt;
			}
			return found.header == &context.header
					   ? fmt::format("'{}' must be declared before it is used by value", found.def->name)
					   : fmt::format("'{}' is used by value, so include \"{}\"", found.def->name, found.header->includeName);
		}

		Problem valueProblem(const CheckContext& context, const TypeDef& type, TypeUse use)
		{
			if (contains(supported, type.name) && type.arguments.empty())
			{
				return std::nullopt;
			}
			if (const Found<StructDef> found = context.symbols.findStruct(type.name))
			{
				const bool isForScripts = use == TypeUse::Property || found.def->specifiers.find("BlueprintType");
				return isForScripts ? visibilityProblem(context, found, type.line)
									: fmt::format("'{}' is not for scripts: its USTRUCT lacks BlueprintType", type.name);
			}
			if (const Found<EnumDef> found = context.symbols.findEnum(type.name))
			{
				return visibilityProblem(context, found, type.line);
			}
			if (const Found<DelegateDef> found = context.symbols.findDelegate(type.name); found && use == TypeUse::Property)
			{
				return visibilityProblem(context, found, type.line);
			}
			if (type.name == "UObject" || context.symbols.findClass(type.name))
			{
				return fmt::format("objects are held by pointer: write '{}*'", type.name);
			}
			return unknown(context, type.name);
		}

		Problem pointerProblem(const CheckContext& context, const TypeDef& type)
		{
			if (type.pointers > 1 || type.references > 1)
			{
				return fmt::format("scripts cannot hold '{}': an object is passed as one plain pointer", spell(type));
			}
			if (type.arguments.empty() && (type.name == "UObject" || context.symbols.findClass(type.name)))
			{
				return std::nullopt;
			}
			const bool isKnown =
				contains(supported, type.name) || context.symbols.findStruct(type.name) || context.symbols.findEnum(type.name);
			return isKnown || context.symbols.areComplete() ? Problem(unknownType(spell(type))) : std::nullopt;
		}

		Problem containerProblem(const CheckContext& context, const TypeDef& type, TypeUse use)
		{
			const size_t count = type.name == "TMap" ? 2 : 1;
			if (type.pointers > 0 || type.arguments.size() != count)
			{
				return fmt::format("'{}' is no container that scripts can hold", spell(type));
			}
			for (const TypeDef& element : type.arguments)
			{
				if (element.isContainer())
				{
					return fmt::format("'{}' nests containers, which scripts cannot hold", spell(type));
				}
				if (element.isConst || element.references > 0)
				{
					return fmt::format("the elements of '{}' must be plain values", spell(type));
				}
				if (Problem problem = typeProblem(context, element, use))
				{
					return problem;
				}
			}
			return std::nullopt;
		}

		bool fits(std::string_view digits, long long low, long long high)
		{
			long long value = 0;
			const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
			return error == std::errc() && value >= low && value <= high;
		}

		bool suits(const DefaultDef& value, const TypeDef& type)
		{
			switch (value.kind)
			{
			case DefaultKind::Bool:
				return type.name == "bool";
			case DefaultKind::Integer:
				return type.name == "float" || (type.name == "uint8" && fits(value.value, 0, UINT8_MAX)) ||
					   (type.name == "int32" && fits(value.value, INT32_MIN, INT32_MAX)) ||
					   (type.name == "int64" && fits(value.value, INT64_MIN, INT64_MAX));
			case DefaultKind::Float:
				return type.name == "float";
			case DefaultKind::Text:
				return type.name == "FString";
			case DefaultKind::Enumerator:
				return type.name == value.enumName;
			default:
				return false;
			}
		}
	} // namespace

	std::optional<std::string> typeProblem(const CheckContext& context, const TypeDef& type, TypeUse use)
	{
		const bool isMember = use == TypeUse::Property;
		if (type.references > 1 || (isMember && type.references > 0))
		{
			return fmt::format("'{}' is a reference that cannot be kept", spell(type));
		}
		if (contains(unavailable, type.name) && !isMember)
		{
			return fmt::format("the type '{}' is not available in this host", type.name);
		}
		if (contains(memberOnly, type.name) || contains(unavailable, type.name))
		{
			return isMember                    ? std::nullopt
				   : type.name == "TObjectPtr" ? Problem("TObjectPtr is for members; write the plain pointer in a function")
											   : Problem(unknownType(type.name));
		}
		if (type.isContainer())
		{
			return containerProblem(context, type, use);
		}
		return type.pointers > 0 ? pointerProblem(context, type) : valueProblem(context, type, use);
	}

	std::optional<std::string> defaultProblem(const CheckContext& context, const ParameterDef& parameter)
	{
		const DefaultDef& value = *parameter.defaultValue;
		const bool isPlain = !parameter.type.isContainer() && !parameter.type.isOutput();
		const bool isPointer = parameter.type.pointers > 0;
		if (!isPlain || (isPointer ? value.kind != DefaultKind::Null : !suits(value, parameter.type)))
		{
			return fmt::format("the default '{}' cannot be given to '{}'", value.spelling, spell(parameter.type));
		}
		const Found<EnumDef> found = context.symbols.findEnum(value.enumName);
		if (value.kind == DefaultKind::Enumerator && found &&
			std::none_of(found.def->enumerators.begin(), found.def->enumerators.end(),
				[&](const EnumeratorDef& enumerator) { return enumerator.name == value.value; }))
		{
			return fmt::format("{} has no enumerator '{}'", value.enumName, value.value);
		}
		return std::nullopt;
	}
} // namespace HeaderTool
