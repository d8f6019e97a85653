#pragma once

#include "Graph/Graph.h"

namespace Program
{
	/**
	 * A graph as the editor shows it, on the editor's dark ground: titles coloured by kind, pins and wires coloured by type,
	 * values where nothing is connected.
	 * @return one SVG element with its size in pixels, which may stand in a page or be a file.
	 */
	std::string drawGraph(const Graph& graph);
} // namespace Program
