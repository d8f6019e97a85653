#pragma once

#include "Graph/Graph.h"

namespace Program
{
	/** @return the graph as the editor's own text for its clipboard. The same graph always gives the same text. */
	std::string blueprintText(const Graph& graph);
} // namespace Program
