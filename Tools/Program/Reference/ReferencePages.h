#pragma once

#include "Examples.h"
#include "Guides.h"
#include "NodeFacts.h"

#include <string>
#include <vector>

namespace Program
{
	/** What all pages are made from. */
	struct Reference
	{
		std::vector<NodeFacts> nodes;
		std::vector<Example> examples;
		std::vector<Guide> guides = {};

		/** The examples that use a node, those about little else first. */
		std::vector<const Example*> examplesOf(const NodeFacts& facts) const;

		/** The guides that name a node. */
		std::vector<const Guide*> guidesOf(const NodeFacts& facts) const;

		/** The enumerations that pins take. */
		std::vector<const UEnum*> enumerations() const;

		/**
		 * What is missing: a function without a text or an example, an outcome, an event or a value without a text.
		 * @return one line for each fault.
		 */
		std::vector<std::string> gaps() const;
	};

	/** @return the file name of a page, in the folder that all pages stand in. */
	std::string pageName(const NodeFacts& facts);
	std::string pageName(const Example& example);
	std::string pageName(const Guide& guide);
	constexpr const char* valuesPageName = "values.html";

	std::string nodePage(const Reference& reference, const NodeFacts& facts);
	std::string examplePage(const Reference& reference, const Example& example);
	std::string guidePage(const Reference& reference, const Guide& guide);
	/** What the values of all enumerations mean. */
	std::string valuesPage(const Reference& reference);
	/** The list of all pages, the nodes by category, with a search that works without a server. */
	std::string indexPage(const Reference& reference);
} // namespace Program
