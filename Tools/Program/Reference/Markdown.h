#pragma once

#include <functional>
#include <string>

namespace Program
{
	/** Where a link of a text leads in the pages; empty = nowhere, so that its words stand there alone. */
	using LinkTarget = std::function<std::string(const std::string&)>;

	/** @return the text in HTML that is well-formed XML, too. @param target  asked for each link. */
	std::string markdownToHtml(const std::string& text, const LinkTarget& target);
} // namespace Program
