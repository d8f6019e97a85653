#include "Reflection.h"

#include "Kismet/BlueprintAsyncActionBase.h"
#include "ValueTransfer.h"

#include <fmt/format.h>

#include <algorithm>
#include <strings.h>

namespace Reflect
{
	namespace
	{
		constexpr uint32 scriptCallable = FUNC_BlueprintCallable | FUNC_BlueprintPure;

		std::vector<Function> collectFunctions(bool areStatic)
		{
			std::vector<Function> found;
			for (const FCompiledInHeader* header : GetCompiledInHeaders())
			{
				for (UClass* (*const staticClass)() : header->Classes)
				{
					UClass* const owner = staticClass();
					for (const UFunction& function : owner->Definition.Functions)
					{
						const bool isStatic = function.Flags & FUNC_Static;
						if (isStatic == areStatic && (function.Flags & scriptCallable))
						{
							found.push_back({owner, &function, fmt::format("{}.{}", owner->GetName(), function.Name)});
						}
					}
				}
			}
			return found;
		}

		/** @param declares  whether a header does. */
		template <class Declares>
		std::string_view moduleWhere(Declares declares)
		{
			const std::span<const FCompiledInHeader* const> headers = GetCompiledInHeaders();
			const auto found = std::find_if(headers.begin(), headers.end(), declares);
			return found == headers.end() ? "" : (*found)->Module;
		}

		template <class Type>
		bool has(std::span<const Type* const> list, const Type& wanted)
		{
			return std::find(list.begin(), list.end(), &wanted) != list.end();
		}
	} // namespace

	const std::vector<Function>& functions()
	{
		static const std::vector<Function> all = collectFunctions(true);
		return all;
	}

	const std::vector<Function>& methods()
	{
		static const std::vector<Function> all = collectFunctions(false);
		return all;
	}

	const Function* findMethod(const UClass& type, std::string_view name)
	{
		const std::vector<Function>& all = methods();
		const auto found = std::find_if(all.begin(), all.end(),
			[&](const Function& method) { return type.IsChildOf(method.owner) && equalNames(method.function->Name, name); });
		return found == all.end() ? nullptr : &*found;
	}

	std::vector<const UEnum*> enumerations()
	{
		std::vector<const UEnum*> all;
		for (const FCompiledInHeader* header : GetCompiledInHeaders())
		{
			all.insert(all.end(), header->Enums.begin(), header->Enums.end());
		}
		return all;
	}

	std::vector<const Function*> findFunctions(std::string_view name)
	{
		std::vector<const Function*> found;
		for (const Function& candidate : functions())
		{
			if (equalNames(candidate.name, name) || equalNames(candidate.function->Name, name))
			{
				found.push_back(&candidate);
			}
		}
		return found;
	}

	std::string_view moduleOf(const UClass& type)
	{
		return moduleWhere(
			[&](const FCompiledInHeader* header) {
				return std::any_of(header->Classes.begin(), header->Classes.end(), [&](UClass* (*const get)()) { return get() == &type; });
			});
	}

	std::string_view moduleOf(const UScriptStruct& type)
	{
		return moduleWhere([&](const FCompiledInHeader* header) { return has(header->Structs, type); });
	}

	std::string_view moduleOf(const UEnum& type)
	{
		return moduleWhere([&](const FCompiledInHeader* header) { return has(header->Enums, type); });
	}

	std::string_view moduleOf(const UDelegateFunction& signature)
	{
		return moduleWhere([&](const FCompiledInHeader* header) { return has(header->Delegates, signature); });
	}

	std::vector<std::string> inputNames(const UFunction& function)
	{
		std::vector<std::string> names;
		for (const FParameter& parameter : function.Parameters)
		{
			if (isInput(parameter.Kind))
			{
				names.emplace_back(parameter.Name);
			}
		}
		return names;
	}

	bool equalNames(std::string_view a, std::string_view b)
	{
		return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
	}

	std::vector<const FMulticastDelegateProperty*> eventsOf(const UClass* type)
	{
		std::vector<const FMulticastDelegateProperty*> events;
		for (; type; type = type->GetSuperClass())
		{
			for (const FMulticastDelegateProperty& event : type->Definition.Delegates)
			{
				events.push_back(&event);
			}
		}
		return events;
	}

	const FMulticastDelegateProperty* findEvent(const UClass* type, std::string_view name)
	{
		const std::vector<const FMulticastDelegateProperty*> events = eventsOf(type);
		const auto found = std::find_if(
			events.begin(), events.end(), [name](const FMulticastDelegateProperty* event) { return equalNames(event->Name, name); });
		return found == events.end() ? nullptr : *found;
	}

	UClass* nodeClassOf(const UFunction& function)
	{
		if (function.Parameters.empty() || function.Parameters.back().Kind != EParameterKind::Return)
		{
			return nullptr;
		}
		const FPropertyType& result = function.Parameters.back().Type();
		const bool makesNode = result.Kind == EPropertyKind::Object && result.Class()->IsChildOf(UBlueprintAsyncActionBase::StaticClass());
		return makesNode ? result.Class() : nullptr;
	}

	std::vector<std::string> valueNames(const FPropertyType& type)
	{
		std::vector<std::string> names;
		for (const FEnumerator& entry : type.Kind == EPropertyKind::Enum ? type.Enum()->Enumerators : std::span<const FEnumerator>())
		{
			names.emplace_back(entry.Name);
		}
		return names;
	}

	std::string typeName(const FPropertyType& type)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Bool:
			return "bool";
		case EPropertyKind::Byte:
			return "uint8";
		case EPropertyKind::Int:
			return "int32";
		case EPropertyKind::Int64:
			return "int64";
		case EPropertyKind::Float:
			return "float";
		case EPropertyKind::Double:
			return "double";
		case EPropertyKind::String:
			return "string";
		case EPropertyKind::DateTime:
			return "FDateTime (YYYY-MM-DDThh:mm:ss.mmmZ)";
		case EPropertyKind::Enum:
			return fmt::format("{} ({})", type.Enum()->Name, fmt::join(valueNames(type), ", "));
		case EPropertyKind::Struct:
			return type.Struct()->Name;
		case EPropertyKind::Object:
			return fmt::format("{} object", type.Class()->GetName());
		case EPropertyKind::Array:
			return isBytes(type) ? "bytes" : "list of " + typeName(*type.Inner());
		case EPropertyKind::Map:
			return fmt::format("map of {} to {}", typeName(*type.Inner()), typeName(*type.Value()));
		}
		return "unknown";
	}
} // namespace Reflect
