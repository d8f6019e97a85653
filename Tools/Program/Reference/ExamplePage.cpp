#include "Html.h"
#include "ReferencePages.h"

#include <fmt/format.h>

namespace Program
{
	std::string examplePage(const Reference& reference, const Example& example)
	{
		std::string items;
		for (const NodeFacts& facts : reference.nodes)
		{
			if (example.uses(facts.ownName()))
			{
				items +=
					fmt::format("<li><a href=\"{}\"><code>{}</code></a></li>\n", escapeHtml(pageName(facts)), escapeHtml(facts.ownName()));
			}
		}
		return htmlPage(example.title, fmt::format("<p class=\"path\"><span class=\"kind\">example</span> Examples/{}</p>\n<h1>{}</h1>\n"
												   "<pre tabindex=\"0\"><code>{}</code></pre>\n<h2>What it uses</h2>\n<ul>\n{}</ul>\n",
										   escapeHtml(example.file), escapeHtml(example.title), escapeHtml(example.text), items));
	}
} // namespace Program
