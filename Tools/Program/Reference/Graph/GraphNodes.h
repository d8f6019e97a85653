#pragma once

#include "Graph/Graph.h"
#include "NodeFacts.h"

/** The nodes that the editor makes of functions and events. */
namespace Program
{
	/** @param facts  of a function, pure or not, or a latent node. */
	GraphNode callNode(const NodeFacts& facts);

	/** The node that one places to hear of an event. */
	GraphNode bindNode(const NodeFacts& event);

	/**
	 * An event of the reader's own.
	 * @param name  what the reader calls it.
	 * @param event  the event whose pins it has; null = none.
	 */
	GraphNode customEvent(const std::string& name, const NodeFacts* event);

	/** The node that makes a struct of its fields, or takes one apart. */
	GraphNode structNode(const UScriptStruct& record, bool isMade);

	/** The engine's node that shows a text on the screen. */
	GraphNode printNode();

	/** @return what one places for a function or an event: one node, or for an event the two that belong together. */
	Graph graphOf(const NodeFacts& facts);
} // namespace Program
