#pragma once

#include "Graph/Graph.h"

namespace Program
{
	/** @return a graph in HTML: its drawing, and the text that the editor takes, with a button that copies it. */
	std::string graphFigure(const Graph& graph);

	/** Stands at the end of a page with such figures. */
	constexpr const char* graphScripts = "<script src=\"copy.js\"></script>\n";
} // namespace Program
