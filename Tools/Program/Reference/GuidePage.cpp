#include "GraphFigure.h"
#include "Html.h"
#include "Markdown.h"
#include "ReferencePages.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		template <class List>
		bool hasFile(const List& list, const std::string& page)
		{
			return std::any_of(list.begin(), list.end(), [&](const auto& entry) { return pageName(entry) == page; });
		}

		/** Guides link to each other and to the examples; what else they link to is not among the pages. */
		std::string pageOf(const Reference& reference, const std::string& link)
		{
			const std::string file = link.substr(0, link.find('#'));
			const std::string stem = file.substr(file.rfind('/') + 1, file.rfind('.') - file.rfind('/') - 1);
			for (const std::string& page : {"guide-" + stem + ".html", "example-" + stem + ".html"})
			{
				if (hasFile(reference.guides, page) || hasFile(reference.examples, page))
				{
					return page + (link.size() > file.size() ? link.substr(file.size()) : "");
				}
			}
			return link.find("://") == std::string::npos ? "" : link;
		}

		std::string withLinks(std::string html, const std::vector<NodeFacts>& nodes)
		{
			for (const NodeFacts& facts : nodes)
			{
				const std::string mark = fmt::format("<code>{}</code>", escapeHtml(facts.ownName()));
				const std::string link = fmt::format("<a href=\"{}\">{}</a>", escapeHtml(pageName(facts)), mark);
				for (size_t place = html.find(mark); place != std::string::npos; place = html.find(mark, place + link.size()))
				{
					html.replace(place, mark.size(), link);
				}
			}
			return html;
		}

		/** Puts the graph itself in the place of its picture. */
		std::string withFigure(const std::string& html, const Guide& guide)
		{
			const std::string mark = fmt::format("<p><img src=\"graphs/{}.svg\"", guide.name);
			const size_t begin = html.find(mark);
			const std::string end = "</p>\n";
			return begin == std::string::npos || !guide.graph
					   ? html
					   : html.substr(0, begin) + graphFigure(*guide.graph) + html.substr(html.find(end, begin) + end.size());
		}
	} // namespace

	std::string guidePage(const Reference& reference, const Guide& guide)
	{
		const std::string html = markdownToHtml(guide.text, [&](const std::string& link) { return pageOf(reference, link); });
		return htmlPage(guide.title,
			fmt::format("<p class=\"path\"><span class=\"kind\">guide</span></p>\n<article>\n{}</article>\n",
				withFigure(withLinks(html, reference.nodes), guide)),
			graphScripts);
	}
} // namespace Program
