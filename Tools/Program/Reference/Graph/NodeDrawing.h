#pragma once

#include "Graph/Graph.h"

namespace Program
{
	struct Point
	{
		double x = 0;
		double y = 0;
	};

	/** How large a node is, and where its pins stand. Lengths are pixels, from the node's upper left corner. */
	struct NodeShape
	{
		double width = 0;
		double height = 0;
		std::vector<Point> pins; // where wires end, one for each pin; of hidden ones without meaning
	};

	NodeShape shapeOf(const Graph& graph, size_t node);

	/** @return the node as the editor shows it: SVG elements, with the node's corner at its place in the graph. */
	std::string drawNode(const Graph& graph, size_t node);
} // namespace Program
