#pragma once

#include "Examples.h"
#include "NodeFacts.h"

#include <map>
#include <string>
#include <vector>

namespace Program
{
	/** What all pages are made from. */
	struct Reference
	{
		std::vector<NodeFacts> nodes;
		std::vector<Example> examples;

		/** The examples that use a node, those about little else first. */
		std::vector<const Example*> examplesOf(const NodeFacts& facts) const;

		/**
		 * What is missing: a function without a text or an example, an outcome or an event without a text.
		 * @return one line for each fault.
		 */
		std::vector<std::string> gaps() const;
	};

	/** @return the file name of a node's page, in the folder that all pages stand in. */
	std::string pageName(const NodeFacts& facts);

	std::string nodePage(const Reference& reference, const NodeFacts& facts);
	/** The list of all nodes, by category, with a search that works without a server. */
	std::string indexPage(const Reference& reference);
} // namespace Program
