#include "Graph/Graph.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace Program
{
	size_t GraphNode::find(std::string_view pin, bool isOutput) const
	{
		const auto isWanted = [&](const GraphPin& own) { return own.name == pin && own.isOutput == isOutput; };
		return static_cast<size_t>(std::find_if(pins.begin(), pins.end(), isWanted) - pins.begin());
	}

	bool Graph::isConnected(PinPlace place) const
	{
		return std::any_of(wires.begin(), wires.end(), [&](const Wire& wire) { return wire.from == place || wire.to == place; });
	}

	size_t Graph::add(GraphNode node)
	{
		const auto isSameKind = [&](const GraphNode& other) { return other.kind == node.kind; };
		node.name = fmt::format("{}_{}", node.kind, std::count_if(nodes.begin(), nodes.end(), isSameKind));
		nodes.push_back(std::move(node));
		return nodes.size() - 1;
	}

	void Graph::connect(size_t fromNode, std::string_view output, size_t toNode, std::string_view input)
	{
		const Wire wire{{fromNode, nodes.at(fromNode).find(output, true)}, {toNode, nodes.at(toNode).find(input, false)}};
		for (const auto& [place, name] : {std::pair(wire.from, output), std::pair(wire.to, input)})
		{
			if (place.pin == nodes[place.node].pins.size())
			{
				throw std::out_of_range(fmt::format("{} has no such pin: {}", nodes[place.node].title, name));
			}
		}
		wires.push_back(wire);
	}
} // namespace Program
