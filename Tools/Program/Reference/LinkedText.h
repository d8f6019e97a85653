#pragma once

#include "NodeFacts.h"

#include <map>
#include <string>

namespace Program
{
	/** Makes HTML of texts, in which the names of other nodes lead to their pages. */
	class LinkedText
	{
	public:
		/** @param self  names on its own page lead nowhere. */
		LinkedText(const std::vector<NodeFacts>& nodes, const NodeFacts& self);

		/** @return a paragraph for each text; its line breaks stay. */
		std::string paragraphs(const std::vector<std::string>& texts) const;

	private:
		std::string link(std::string_view text) const;

		std::map<std::string, std::string, std::less<>> pages; // own name to file
	};
} // namespace Program
