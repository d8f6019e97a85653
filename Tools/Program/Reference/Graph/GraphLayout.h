#pragma once

#include "Graph/Graph.h"

#include <optional>

namespace Program
{
	/** Puts all nodes side by side. */
	void placeInRow(Graph& graph);

	/** Nodes that stand side by side. */
	struct GraphRow
	{
		std::vector<size_t> nodes;
		std::optional<size_t> after; // the row begins to the right of this node; nothing = at the left
	};

	/** Gives each row its place, as high up as it fits below those before it. @param rows  hold each node once. */
	void placeInRows(Graph& graph, const std::vector<GraphRow>& rows);
} // namespace Program
