#include "Markdown.h"

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
	} // namespace

	std::string markdownToHtml(const std::string& text, const LinkTarget& target)
	{
		static constexpr std::string_view begin = "<a href=\"";
		static constexpr std::string_view end = "</a>";

		const std::string html = render(text);
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
