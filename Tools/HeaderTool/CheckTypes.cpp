#include "Checks.h"

#include <algorithm>
#include <array>

namespace HeaderTool
{
	namespace
	{
		constexpr std::array<std::string_view, 8> supported = {
			"bool", "uint8", "int32", "int64", "float", "double", "FString", "FDateTime"};

		/** The engine's scripts hold these, this host's do not. */
		constexpr std::array<std::string_view, 11> unavailable = {"FName", "FText", "TSet", "FGuid", "FTimespan", "FVector", "TSubclassOf",
			"TSoftObjectPtr", "TSoftClassPtr", "TScriptInterface", "TEnumAsByte"};

		/** Members may have these types when only the collector looks at them. */
		constexpr std::array<std::string_view, 7> memberOnly = {
			"uint16", "uint32", "uint64", "int8", "int16", "TWeakObjectPtr", "TObjectPtr"};

		constexpr std::pair<std::string_view, std::string_view> replacements[] = {{"int", "int32"}, {"unsigned", "int32"},
			{"long", "int64"}, {"size_t", "int64"}, {"char", "uint8"}, {"std::string", "FString"}, {"TCHAR", "FString"},
			{"ANSICHAR", "FString"}, {"FStringView", "FString"}, {"TObjectPtr", "the plain pointer"}};

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

		std::string valueProblem(const Symbols& symbols, const TypeDef& type, TypeUse use)
		{
			if (const ClassDef* const found = symbols.findStruct(type.name))
			{
				const bool isForScripts = use == TypeUse::Property || found->specifiers.find("BlueprintType");
				return isForScripts ? "" : fmt::format("'{}' is not for scripts: its USTRUCT lacks BlueprintType", type.name);
			}
			if (symbols.isClass(type.name))
			{
				return fmt::format("objects are held by pointer: write '{}*'", type.name);
			}
			const bool isKnown = (contains(supported, type.name) && type.arguments.empty()) || symbols.findEnum(type.name) ||
								 (use == TypeUse::Property && symbols.findDelegate(type.name));
			return isKnown ? "" : unknownType(type.name);
		}

		std::string containerProblem(const Symbols& symbols, const TypeDef& type, TypeUse use)
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
				if (std::string problem = typeProblem(symbols, element, use); !problem.empty())
				{
					return problem;
				}
			}
			return "";
		}
	} // namespace

	std::string typeProblem(const Symbols& symbols, const TypeDef& type, TypeUse use)
	{
		const bool isMember = use == TypeUse::Property;
		if (type.references > (isMember ? 0 : 1))
		{
			return fmt::format("'{}' is a reference that cannot be kept", spell(type));
		}
		if (isMember && (contains(memberOnly, type.name) || contains(unavailable, type.name)))
		{
			return "";
		}
		if (contains(unavailable, type.name))
		{
			return fmt::format("the type '{}' is not available in this host", type.name);
		}
		if (type.isContainer())
		{
			return containerProblem(symbols, type, use);
		}
		if (type.pointers == 0)
		{
			return valueProblem(symbols, type, use);
		}
		return type.pointers == 1 && symbols.isClass(type.name) ? "" : unknownType(spell(type));
	}

	bool suits(const DefaultDef& value, const TypeDef& type)
	{
		if (type.isContainer() || type.isOutput() || type.pointers > 0)
		{
			return type.pointers > 0 && value.kind == DefaultKind::Null;
		}
		switch (value.kind)
		{
		case DefaultKind::Bool:
			return type.name == "bool";
		case DefaultKind::Integer:
			return type.name == "uint8" || type.name == "int32" || type.name == "int64";
		case DefaultKind::Float:
			return type.name == "float" || type.name == "double";
		case DefaultKind::Text:
			return type.name == "FString";
		case DefaultKind::Enumerator:
			return type.name == value.enumName;
		default:
			return false;
		}
	}
} // namespace HeaderTool
