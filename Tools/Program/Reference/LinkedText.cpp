#include "LinkedText.h"

#include "Html.h"
#include "ReferencePages.h"
#include "Words.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	LinkedText::LinkedText(const std::vector<NodeFacts>& nodes, const NodeFacts& self)
	{
		for (const NodeFacts& facts : nodes)
		{
			if (facts.name != self.name)
			{
				pages.emplace(facts.ownName(), pageName(facts));
			}
		}
	}

	std::string LinkedText::link(std::string_view text) const
	{
		std::string linked;
		while (!text.empty())
		{
			const bool isWord = isWordCharacter(text.front());
			const auto end = std::find_if(text.begin(), text.end(), [&](char c) { return isWordCharacter(c) != isWord; });
			const std::string_view piece = text.substr(0, static_cast<size_t>(end - text.begin()));
			const auto page = pages.find(piece);
			linked += page == pages.end() ? escapeHtml(piece)
										  : fmt::format("<a href=\"{}\"><code>{}</code></a>", escapeHtml(page->second), escapeHtml(piece));
			text.remove_prefix(piece.size());
		}
		return linked;
	}

	std::string LinkedText::paragraphs(const std::vector<std::string>& texts) const
	{
		std::string html;
		for (const std::string& text : texts)
		{
			html += fmt::format("<p>{}</p>\n", link(text));
		}
		return html;
	}
} // namespace Program
