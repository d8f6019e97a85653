#pragma once

#include <string>
#include <string_view>

namespace Program
{
	/** @return the text for the content or a quoted attribute of HTML and SVG; control characters but tab and line feed are dropped. */
	std::string escapeHtml(std::string_view text);

	/**
	 * @param title  plain text.
	 * @param body  HTML, what stands in <main>.
	 * @param scripts  HTML at the end of the body.
	 * @return a whole page. Pages are well-formed XML, too, so that any reader can check them.
	 */
	std::string htmlPage(std::string_view title, std::string_view body, std::string_view scripts = "");
} // namespace Program
