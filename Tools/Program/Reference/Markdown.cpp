#include "Markdown.h"

#include <cctype>
#include <fmt/format.h>
#include <md4c-html.h>
#include <stdexcept>
#include <string_view>

namespace Program
{
	namespace
	{
		void append(const MD_CHAR* text, MD_SIZE size, void* html)
		{
			static_cast<std::string*>(html)->append(text, size);
		}

		std::string render(const std::string& text)
		{
			std::string html;
			if (md_html(text.data(), static_cast<MD_SIZE>(text.size()), append, &html, MD_FLAG_TABLES | MD_FLAG_NOHTML,
					MD_HTML_FLAG_XHTML) != 0)
			{
				throw std::runtime_error("a text cannot be rendered");
			}
			return html;
		}

		/** @return the name that links to a heading use: small letters, digits and hyphens, as the sites that show such files make it. */
		std::string anchorOf(std::string_view heading)
		{
			std::string anchor;
			bool isTag = false;
			for (const char c : heading)
			{
				isTag = c == '<' || (isTag && c != '>');
				if (c == ' ' || c == '-')
				{
					anchor += isTag ? "" : "-";
				}
				else if (!isTag && (std::isalnum(static_cast<unsigned char>(c)) || c == '_'))
				{
					anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
				}
			}
			return anchor;
		}

		/** Gives headings below the title the names that links to them use. */
		std::string withAnchors(std::string html)
		{
			for (const std::string_view level : {"2", "3"})
			{
				const std::string begin = fmt::format("<h{}>", level);
				const std::string end = fmt::format("</h{}>", level);
				for (size_t place = html.find(begin); place != std::string::npos; place = html.find(begin, place))
				{
					const size_t text = place + begin.size();
					const std::string named =
						fmt::format("<h{} id=\"{}\">", level, anchorOf(std::string_view(html).substr(text, html.find(end, text) - text)));
					html.replace(place, begin.size(), named);
					place += named.size();
				}
			}
			return html;
		}
	} // namespace

	std::string markdownToHtml(const std::string& text, const LinkTarget& target)
	{
		static constexpr std::string_view begin = "<a href=\"";
		static constexpr std::string_view end = "</a>";

		const std::string html = withAnchors(render(text));
		std::string linked;
		size_t place = 0;
		for (size_t link = html.find(begin); link != std::string::npos; link = html.find(begin, place))
		{
			const size_t quote = html.find('"', link + begin.size());
			const size_t close = html.find(end, quote);
			const std::string words = html.substr(html.find('>', quote) + 1, close - html.find('>', quote) - 1);
			const std::string page = target(html.substr(link + begin.size(), quote - link - begin.size()));
			linked += html.substr(place, link - place);
			linked += page.empty() ? words : fmt::format("<a href=\"{}\">{}</a>", page, words);
			place = close + end.size();
		}
		return linked + html.substr(place);
	}
} // namespace Program
