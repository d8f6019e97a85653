#pragma once

#include "Graph/Graph.h"
#include "NodeFacts.h"

#include <optional>
#include <string>
#include <vector>

namespace Program
{
	/** A text about one thing to do. */
	struct Guide
	{
		std::string name; // "first-request"
		std::string title;
		std::string purpose; // what it is for, in a few words
		std::string text; // Markdown
		std::optional<Graph> graph; // the same in the editor

		bool names(std::string_view member) const;
	};

	/**
	 * The guides, in the order of their list, with the graphs that stand beside them.
	 * @param nodes  what the graphs are made of. Throws std::runtime_error for a graph that is wrong.
	 */
	std::vector<Guide> loadGuides(const std::vector<NodeFacts>& nodes);
} // namespace Program
