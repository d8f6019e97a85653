#include "Graph/GraphNodes.h"

#include "DisplayName.h"
#include "FieldFacts.h"
#include "Graph/GraphLayout.h"
#include "Graph/PinTypes.h"

#include <fmt/format.h>

namespace Program
{
	namespace
	{
		std::string classPath(std::string_view path)
		{
			return fmt::format("/Script/CoreUObject.Class'{}'", path);
		}

		std::string memberReference(std::string_view owner, std::string_view member)
		{
			return fmt::format("(MemberParent=\"{}\",MemberName=\"{}\")", classPath(owner), member);
		}

		GraphPin executionPin(const std::string& name, const std::string& title, bool isOutput)
		{
			return {name, title, {"exec"}, isOutput};
		}

		GraphPin dataPin(const PinFacts& facts)
		{
			GraphPin pin{facts.name, facts.title, pinTypeOf(*facts.type), !facts.isLeft()};
			if (facts.isLeft())
			{
				const PinValue value = pinValueOf(*facts.type, facts.defaultText);
				pin.value = value.text;
				pin.shownValue = value.shown;
			}
			return pin;
		}

		GraphPin objectPin(const std::string& name, const std::string& title, const std::string& path)
		{
			GraphPin pin{name, title, {"object"}};
			pin.type.object = classPath(path);
			return pin;
		}

		/** A static function is called on an object that nobody sees. */
		GraphPin hiddenTarget(const std::string& owner)
		{
			GraphPin pin = objectPin("self", "Target", owner);
			pin.isHidden = true;
			return pin;
		}

		void addDataPins(GraphNode& node, const NodeFacts& facts, bool isLeft)
		{
			for (const PinFacts& pin : facts.pins)
			{
				if (pin.isLeft() == isLeft)
				{
					node.pins.push_back(dataPin(pin));
				}
			}
		}

		std::vector<std::string> callProperties(const NodeFacts& facts)
		{
			if (facts.kind == NodeKind::Latent)
			{
				return {fmt::format("ProxyFactoryFunctionName=\"{}\"", facts.ownName()),
					fmt::format("ProxyFactoryClass=\"{}\"", classPath(facts.owner)),
					fmt::format("ProxyClass=\"{}\"", classPath(facts.nodeClass))};
			}
			const std::string reference = "FunctionReference=" + memberReference(facts.owner, facts.ownName());
			return facts.kind == NodeKind::Pure ? std::vector<std::string>{"bIsPureFunc=True", reference} : std::vector{reference};
		}

		/** What an event hands over, as the editor takes it over into an event of the reader's own. */
		GraphPin userDefinedPin(const PinFacts& facts)
		{
			GraphPin pin = dataPin(facts);
			pin.isUserDefined = true;
			pin.type.isReference = !pin.type.container.empty();
			return pin;
		}

		std::string signatureMembers(std::string_view signature)
		{
			const size_t dot = signature.find('.');
			return fmt::format(
				"MemberParent=\"/Script/CoreUObject.Package'{}'\",MemberName=\"{}\"", signature.substr(0, dot), signature.substr(dot + 1));
		}
	} // namespace

	GraphNode callNode(const NodeFacts& facts)
	{
		static constexpr NodeLook looks[] = {NodeLook::Pure, NodeLook::Call, NodeLook::Latent, NodeLook::Event};
		const bool isLatent = facts.kind == NodeKind::Latent;
		GraphNode node{isLatent ? "K2Node_AsyncAction" : "K2Node_CallFunction", "", callProperties(facts),
			looks[static_cast<size_t>(facts.kind)], facts.title, "", {}};
		if (facts.kind != NodeKind::Pure)
		{
			node.pins = {executionPin("execute", "", false), executionPin("then", "", true)};
		}
		for (const OutcomeFacts& outcome : facts.outcomes)
		{
			node.pins.push_back(executionPin(outcome.name, outcome.title, true));
		}
		if (!isLatent)
		{
			node.pins.push_back(facts.isOfObject ? objectPin("self", "Target", facts.owner) : hiddenTarget(facts.owner));
		}
		addDataPins(node, facts, true);
		addDataPins(node, facts, false);
		return node;
	}

	GraphNode bindNode(const NodeFacts& event)
	{
		GraphNode node{"K2Node_AddDelegate", "", {"DelegateReference=" + memberReference(event.owner, event.ownName())}, NodeLook::Call,
			"Bind Event to " + event.title, "", {}};
		GraphPin handler{"Delegate", "Event", {"delegate"}};
		handler.type.signature = signatureMembers(event.signature);
		handler.type.isReference = true;
		node.pins = {executionPin("execute", "", false), executionPin("then", "", true), objectPin("self", "Target", event.owner), handler};
		return node;
	}

	GraphNode customEvent(const std::string& name, const NodeFacts* event)
	{
		GraphNode node{
			"K2Node_CustomEvent", "", {fmt::format("CustomFunctionName=\"{}\"", name)}, NodeLook::Event, name, "Custom Event", {}};
		node.pins = {{"OutputDelegate", "", {"delegate"}, true}, executionPin("then", "", true)};
		for (const PinFacts& pin : event ? event->pins : std::vector<PinFacts>())
		{
			node.pins.push_back(userDefinedPin(pin));
		}
		return node;
	}

	GraphNode structNode(const UScriptStruct& record, bool isMade)
	{
		const PinType type = pinTypeOf(record.Type());
		const std::string title = displayName(record.Name);
		GraphNode node{isMade ? "K2Node_MakeStruct" : "K2Node_BreakStruct", "", {fmt::format("StructType=\"{}\"", type.object)},
			NodeLook::Pure, fmt::format("{} {}", isMade ? "Make" : "Break", title), "", {}};
		node.pins.push_back({record.Name, title, type, isMade});
		for (const FieldFacts& field : fieldsOf(record))
		{
			GraphPin pin{field.name, displayName(field.name, field.type->Kind == EPropertyKind::Bool), pinTypeOf(*field.type), !isMade};
			const PinValue value = isMade ? pinValueOf(*field.type, field.presetText()) : PinValue();
			pin.value = value.text;
			pin.shownValue = value.shown;
			node.pins.push_back(pin);
		}
		return node;
	}

	GraphNode printNode()
	{
		const std::string owner = "/Script/Engine.KismetSystemLibrary";
		GraphNode node{"K2Node_CallFunction", "", {"FunctionReference=" + memberReference(owner, "PrintString")}, NodeLook::Call,
			"Print String", "", {}};
		node.pins = {executionPin("execute", "", false), executionPin("then", "", true), hiddenTarget(owner),
			{"InString", "In String", {"string"}, false, false, false, "Hello", "Hello"}};
		return node;
	}

	Graph graphOf(const NodeFacts& facts)
	{
		Graph graph{facts.name, {}, {}};
		if (facts.kind != NodeKind::Event)
		{
			graph.add(callNode(facts));
			return graph;
		}
		const size_t handler = graph.add(customEvent(facts.ownName() + "_Event", &facts));
		const size_t bind = graph.add(bindNode(facts));
		graph.connect(handler, "OutputDelegate", bind, "Delegate");
		placeInRow(graph);
		return graph;
	}
} // namespace Program
