#include "Commands.h"
#include "Console.h"
#include "FunctionNames.h"
#include "NodesAsJson.h"
#include "Reference/WriteReference.h"

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
			fmt::print("  {:6} {}: {}{}\n", direction, name, Reflect::typeName(type), tail);
		}

		void printEvents(UClass* nodeClass)
		{
			for (const FMulticastDelegateProperty* event : Reflect::eventsOf(nodeClass))
			{
				fmt::print("  {:6} {}:\n", "event", event->Name);
				for (const FParameter& parameter : event->Signature->Parameters)
				{
					fmt::print("           {}: {}\n", parameter.Name, Reflect::typeName(parameter.Type()));
				}
			}
		}

		void printFunction(const Reflect::Function& function)
		{
			static constexpr const char* directions[] = {"in", "out", "in/out", "out"};

			fmt::print("{}  [{}]\n", function.name, FindMeta(function.function->Meta, "Category"));
			if (const char* tooltip = FindMeta(function.function->Meta, "ToolTip"); *tooltip)
			{
				fmt::print("{}\n", indented(tooltip));
			}
			UClass* const nodeClass = Reflect::nodeClassOf(*function.function);
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

		int writePages(const std::string& directory)
		{
			const Reference reference = collectReference();
			writeReference(reference, directory);
			const std::vector<std::string> gaps = reference.gaps();
			for (const std::string& gap : gaps)
			{
				complain("corvane: " + gap);
			}
			fmt::print("{} pages in {}\n", reference.nodes.size() + 1, directory);
			return gaps.empty() ? exitGood : exitFailed;
		}

		void printJson(const Reflect::Function* chosen)
		{
			const Reference reference = collectReference();
			Json list = Json::array();
			for (const NodeFacts& facts : reference.nodes)
			{
				if (!chosen || facts.name == chosen->name)
				{
					list.push_back(toJson(reference, facts));
				}
			}
			fmt::print("{}\n", list.dump(2));
		}
	} // namespace

	int listNodes(const NodesOptions& options)
	{
		const Reflect::Function* const chosen = options.function.empty() ? nullptr : &functionNamed(options.function);
		if (!options.htmlDirectory.empty())
		{
			return writePages(options.htmlDirectory);
		}
		if (options.json)
		{
			printJson(chosen);
			return exitGood;
		}
		for (const Reflect::Function& function : Reflect::functions())
		{
			if (!chosen || &function == chosen)
			{
				printFunction(function);
			}
		}
		return exitGood;
	}
} // namespace Program
