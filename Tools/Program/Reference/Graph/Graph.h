#pragma once

#include <string>
#include <vector>

/** Graphs of the editor as plain values: they are drawn, and written as the text that the editor copies and pastes. */
namespace Program
{
	/** What a pin carries, in the editor's words. */
	struct PinType
	{
		std::string category; // "exec", "string", "real", ...
		std::string subCategory = {}; // of "real": "float"
		std::string object = {}; // class, struct or enumeration: "/Script/CoreUObject.Enum'/Script/Module.EName'"
		std::string signature = {}; // of "delegate": the members of a reference to what its handlers take
		std::string container = {}; // "Array" or "Map"; empty = a single value
		std::string mapValue = {}; // the category of a map's values
		bool isReference = false; // to what may not be changed

		bool isExecution() const { return category == "exec"; }
	};

	struct GraphPin
	{
		std::string name;
		std::string title; // as shown; empty = the pin stands alone
		PinType type;
		bool isOutput = false;
		bool isHidden = false;
		bool isUserDefined = false; // an event's own pin
		std::string value = {}; // while nothing is connected
		std::string shownValue = {}; // the same as the editor shows it
	};

	enum class NodeLook
	{
		Pure,
		Call,
		Latent,
		Event
	};

	struct GraphNode
	{
		std::string kind; // the editor's class: "K2Node_CallFunction"
		std::string name; // unlike every other in its graph: "K2Node_CallFunction_0"
		std::vector<std::string> properties; // "FunctionReference=(...)"
		NodeLook look = NodeLook::Call;
		std::string title;
		std::string subtitle = {}; // empty = it has none
		std::vector<GraphPin> pins = {};
		int x = 0; // of its upper left corner
		int y = 0;

		/** @return the place of a pin among the pins, or their number when there is none. */
		size_t find(std::string_view pin, bool isOutput) const;
	};

	struct PinPlace
	{
		size_t node;
		size_t pin;

		bool operator==(const PinPlace&) const = default;
	};

	/** From an output to an input. */
	struct Wire
	{
		PinPlace from;
		PinPlace to;
	};

	struct Graph
	{
		std::string title;
		std::vector<GraphNode> nodes;
		std::vector<Wire> wires;

		const GraphPin& operator[](PinPlace place) const { return nodes[place.node].pins[place.pin]; }
		bool isConnected(PinPlace place) const;
		/** Appends a node under a name that is not in use. @return its place. */
		size_t add(GraphNode node);
		/** Throws std::out_of_range when a node has no such pin. */
		void connect(size_t fromNode, std::string_view output, size_t toNode, std::string_view input);
	};
} // namespace Program
