#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Program
{
	/** A documentation comment or a tooltip, taken apart at its tags. */
	struct DocText
	{
		std::string text; // what is not about a single pin
		std::vector<std::pair<std::string, std::string>> pins; // name to text; "ReturnValue" has that of @return

		/** @param name  compared without regard to case. @return an empty text when there is none about that pin. */
		std::string_view pin(std::string_view name) const;
	};

	/**
	 * Tooltips stay as saved Blueprints and translations know them; what slipped into some of them is not shown.
	 * @param text  lines as they were written; where they break means something.
	 */
	DocText readTooltip(std::string_view text);

	/** @param text  lines that were broken for their length only; an empty one ends a paragraph. */
	DocText readComment(std::string_view text);
} // namespace Program
