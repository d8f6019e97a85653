#include "Commands.h"

#include "Reflection.h"

#include <fmt/core.h>

namespace Program
{
	namespace
	{
		std::string indented(std::string text)
		{
			for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1))
			{
				text.insert(end + 1, "    ");
			}
			return "    " + text;
		}

		void printPin(const char* direction, const char* name, const FPropertyType& type, const char* defaultText)
		{
			const std::string tail = defaultText ? fmt::format(" = {}", *defaultText ? defaultText : "\"\"") : "";
			fmt::print("  {:6} {}: {}{}\n", direction, name, Script::typeName(type), tail);
		}

		void printEvents(UClass* nodeClass)
		{
			for (const FMulticastDelegateProperty* event : Script::eventsOf(nodeClass))
			{
				fmt::print("  {:6} {}:\n", "event", event->Name);
				for (const FParameter& parameter : event->Signature->Parameters)
				{
					fmt::print("           {}: {}\n", parameter.Name, Script::typeName(parameter.Type()));
				}
			}
		}

		void printFunction(const Script::Function& function)
		{
			static constexpr const char* directions[] = {"in", "out", "in/out", "out"};

			fmt::print("{}  [{}]\n", function.name, FindMeta(function.function->Meta, "Category"));
			if (const char* tooltip = FindMeta(function.function->Meta, "ToolTip"); *tooltip)
			{
				fmt::print("{}\n", indented(tooltip));
			}
			UClass* const nodeClass = Script::nodeClassOf(*function.function);
			for (const FParameter& parameter : function.function->Parameters)
			{
				const bool isTheNode = nodeClass && parameter.Kind == EParameterKind::Return;
				if (!isTheNode)
				{
					printPin(directions[static_cast<size_t>(parameter.Kind)], parameter.Name, parameter.Type(), parameter.Default);
				}
			}
			printEvents(nodeClass);
			fmt::print("\n");
		}
	} // namespace

	int listNodes()
	{
		for (const Script::Function& function : Script::functions())
		{
			printFunction(function);
		}
		return exitGood;
	}
} // namespace Program
