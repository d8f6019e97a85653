#include "Commands.h"
#include "Console.h"
#include "FieldFacts.h"
#include "FunctionNames.h"
#include "NodesAsJson.h"
#include "Reference/WriteReference.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>

namespace Program
{
	namespace
	{
		void printTexts(const std::vector<std::string>& texts, const std::string& indent)
		{
			for (const std::string& text : texts)
			{
				std::string lines = text;
				for (size_t end = lines.find('\n'); end != std::string::npos; end = lines.find('\n', end + 1))
				{
					lines.insert(end + 1, indent);
				}
				fmt::print("{}{}\n", indent, lines);
			}
		}

		void printValues(const FPropertyType& type, const std::string& indent)
		{
			if (type.Kind == EPropertyKind::Enum)
			{
				for (const FEnumerator& value : type.Enum()->Enumerators)
				{
					fmt::print("{}{} = {}: {}. {}\n", indent, value.Name, value.Value, value.DisplayName, value.Comment);
				}
			}
		}

		void printFields(const UScriptStruct& record, const std::string& indent)
		{
			const std::string inner = indent + "    ";
			for (const FieldFacts& field : fieldsOf(record))
			{
				const std::string tail = field.defaultText.empty() ? "" : fmt::format(" = {}", field.defaultText);
				fmt::print("{}{}: {}{}\n", indent, field.name, shortTypeName(*field.type), tail);
				printTexts(field.texts, inner);
				printValues(*field.type, inner);
			}
		}

		void printPin(const PinFacts& pin)
		{
			static constexpr const char* directions[] = {"in", "out", "in/out", "out"};
			static const std::string indent(11, ' ');

			const std::string declared = pin.defaultText.value_or("");
			const std::string tail = pin.defaultText ? fmt::format(" = {}", declared.empty() ? "\"\"" : declared) : "";
			fmt::print("  {:6} {}: {}{}\n", directions[static_cast<size_t>(pin.kind)], pin.name, Reflect::typeName(*pin.type), tail);
			printTexts(pin.texts, indent);
			printValues(*pin.type, indent);
			if (pin.type->Kind == EPropertyKind::Struct)
			{
				printFields(*pin.type->Struct(), indent);
			}
		}

		void printNode(const NodeFacts& facts)
		{
			fmt::print("{}  [{}]\n", facts.name, facts.category);
			printTexts(facts.texts, "    ");
			for (const PinFacts& pin : facts.pins)
			{
				printPin(pin);
			}
			for (const OutcomeFacts& outcome : facts.outcomes)
			{
				fmt::print("  {:6} {}\n", "event", outcome.name);
				printTexts(outcome.texts, std::string(11, ' '));
			}
			fmt::print("\n");
		}

		/** @return the full name of a function or an event that is called by a full or a bare name. */
		std::string fullName(const std::string& name)
		{
			std::vector<std::string> others;
			for (const NodeFacts& facts : allFacts())
			{
				const bool isNamed = Reflect::equalNames(facts.name, name) || Reflect::equalNames(facts.ownName(), name);
				const bool isOther = facts.kind == NodeKind::Event || facts.isOfObject; // than a function that can be called alone
				if (isOther && isNamed)
				{
					return facts.name;
				}
				if (isOther)
				{
					others.push_back(facts.ownName());
				}
			}
			return functionNamed(name, others).name;
		}

		int writePages(const std::string& directory)
		{
			const Reference reference = collectReference();
			writeReference(reference, directory);
			const std::vector<std::string> gaps = reference.gaps();
			for (const std::string& missing : gaps)
			{
				complain("corvane: " + missing);
			}
			fmt::print("{} pages in {}\n", reference.nodes.size() + reference.examples.size() + reference.guides.size() + 2, directory);
			return gaps.empty() ? exitGood : exitFailed;
		}

		/** @param name  empty = all. */
		std::vector<NodeFacts> chosenOf(const std::vector<NodeFacts>& all, const std::string& name)
		{
			std::vector<NodeFacts> chosen;
			std::copy_if(all.begin(), all.end(), std::back_inserter(chosen),
				[full = name.empty() ? name : fullName(name)](const NodeFacts& facts) { return full.empty() || facts.name == full; });
			return chosen;
		}

		void printJson(const std::string& name)
		{
			const Reference reference = collectReference();
			Json list = Json::array();
			for (const NodeFacts& facts : chosenOf(reference.nodes, name))
			{
				list.push_back(toJson(reference, facts));
			}
			fmt::print("{}\n", list.dump(2));
		}
	} // namespace

	int listNodes(const NodesOptions& options)
	{
		if (!options.htmlDirectory.empty())
		{
			return writePages(options.htmlDirectory);
		}
		if (options.json)
		{
			printJson(options.name);
			return exitGood;
		}
		for (const NodeFacts& facts : chosenOf(allFacts(), options.name))
		{
			printNode(facts);
		}
		return exitGood;
	}
} // namespace Program
