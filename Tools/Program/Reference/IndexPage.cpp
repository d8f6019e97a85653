#include "Html.h"
#include "ReferencePages.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr std::string_view search = R"(<p class="search">
<label for="search">Search</label>
<input id="search" type="search" autocomplete="off" spellcheck="false" />
<output id="count" for="search"></output>
</p>
)";

		std::string firstSentence(const NodeFacts& facts)
		{
			const std::string text = facts.texts.empty() ? "" : facts.texts.front().substr(0, facts.texts.front().find('\n'));
			const size_t end = text.find(". ");
			return end == std::string::npos ? text : text.substr(0, end + 1);
		}

		/** What a search may find beside what the line shows. */
		std::string searchWords(const NodeFacts& facts)
		{
			std::string words = facts.name + " " + facts.category;
			for (const PinFacts& pin : facts.pins)
			{
				words += " " + pin.name;
			}
			return words;
		}

		std::string item(const NodeFacts& facts)
		{
			return fmt::format("<li data-words=\"{}\"><span class=\"kind {}\">{}</span> <a href=\"{}\">{}</a> <span>{}</span></li>\n",
				escapeHtml(searchWords(facts)), kindName(facts.kind), kindName(facts.kind), escapeHtml(pageName(facts)),
				escapeHtml(facts.title), escapeHtml(firstSentence(facts)));
		}

		/** "Corvane|File Upload" is shown as "File Upload". */
		std::string categoryTitle(const std::string& category)
		{
			std::string title = category.substr(category.find('|') + 1);
			for (size_t bar = title.find('|'); bar != std::string::npos; bar = title.find('|'))
			{
				title.replace(bar, 1, ": ");
			}
			return title;
		}

		std::vector<std::string> categories(const std::vector<NodeFacts>& nodes)
		{
			std::vector<std::string> found;
			for (const NodeFacts& facts : nodes)
			{
				if (std::find(found.begin(), found.end(), facts.category) == found.end())
				{
					found.push_back(facts.category);
				}
			}
			return found;
		}
	} // namespace

	std::string indexPage(const Reference& reference)
	{
		std::string body = "<h1>Nodes and script functions</h1>\n<p>Each page shows a node as the editor does, its pins, and scripts that "
						   "use it. Everything here comes from the headers and the examples.</p>\n" +
						   std::string(search);
		for (const std::string& category : categories(reference.nodes))
		{
			body += fmt::format("<section>\n<h2>{}</h2>\n<ul class=\"nodes\">\n", escapeHtml(categoryTitle(category)));
			for (const NodeFacts& facts : reference.nodes)
			{
				body += facts.category == category ? item(facts) : "";
			}
			body += "</ul>\n</section>\n";
		}
		return htmlPage("Corvane node reference", body, "<script src=\"reference.js\"></script>\n");
	}
} // namespace Program
