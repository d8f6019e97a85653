#pragma once

#include "Graph/Graph.h"
#include "NodeFacts.h"

namespace Program
{
	/**
	 * Reads the description of a graph. Every line that is not indented is a node, and what can run runs from left to right:
	 *
	 *     # A comment.
	 *     event Fetch
	 *     get = CreateHttpRequestGET
	 *         url: http://127.0.0.1:8000/
	 *     executeHttpRequests
	 *         httpRequests < get.httpRequests
	 *
	 *     after node.OnFail
	 *     print
	 *
	 * A node is a function's name, `bind EVENT`, `event NAME`, `event NAME of EVENT` with that event's pins, `make STRUCT`,
	 * `break STRUCT`, or `print`; others speak of it by the word before the "=". Its indented lines are values and wires, which may come from further down. An
	 * empty line begins the next row; `after NODE.OUTCOME` says what leads to it.
	 *
	 * @param title  what the graph shows.
	 * @param nodes  the functions and events that may be used.
	 * Throws std::runtime_error with the number of the line that is wrong.
	 */
	Graph readGraph(const std::string& title, const std::string& text, const std::vector<NodeFacts>& nodes);
} // namespace Program
