#include "Html.h"
#include "ReferencePages.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

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

		void addWords(std::string& words, const std::vector<std::string>& texts)
		{
			words += fmt::format(" {}", fmt::join(texts, " "));
		}

		std::string valueWords(const UEnum& values)
		{
			std::string words = FindMeta(values.Meta, "Comment");
			for (const FEnumerator& value : values.Enumerators)
			{
				words += fmt::format(" {} {} {}", value.Name, value.DisplayName, value.Comment);
			}
			return words;
		}

		/** What a search may find beside what the line shows. */
		std::string searchWords(const NodeFacts& facts)
		{
			std::string words = facts.category;
			addWords(words, facts.texts);
			for (const PinFacts& pin : facts.pins)
			{
				words += " " + pin.name;
				addWords(words, pin.texts);
			}
			for (const OutcomeFacts& outcome : facts.outcomes)
			{
				words += " " + outcome.name;
				addWords(words, outcome.texts);
			}
			for (const UEnum* values : facts.enumerations())
			{
				words += fmt::format(" {} {}", values->Name, valueWords(*values));
			}
			return words;
		}

		/** A line of the list. */
		struct Entry
		{
			std::string kind;
			std::string page;
			std::string title;
			std::string name; // what it is called elsewhere; empty = the same as the title
			std::string shown; // beside the title
			std::string words; // what else a search may find
		};

		std::string item(const Entry& entry)
		{
			return fmt::format("<li data-name=\"{}\" data-words=\"{}\"><span class=\"kind {}\">{}</span> <a href=\"{}\">{}</a> "
							   "<span>{}</span></li>\n",
				escapeHtml(entry.name), escapeHtml(entry.words), entry.kind, entry.kind, escapeHtml(entry.page), escapeHtml(entry.title),
				escapeHtml(entry.shown));
		}

		std::string section(std::string_view title, const std::vector<Entry>& entries)
		{
			std::string items;
			for (const Entry& entry : entries)
			{
				items += item(entry);
			}
			return items.empty()
					   ? items
					   : fmt::format("<section>\n<h2>{}</h2>\n<ul class=\"nodes\">\n{}</ul>\n</section>\n", escapeHtml(title), items);
		}

		std::string guideSection(const std::vector<Guide>& guides)
		{
			std::vector<Entry> entries;
			for (const Guide& guide : guides)
			{
				entries.push_back({"guide", pageName(guide), guide.title, "", guide.purpose, guide.text});
			}
			return section("Guides", entries);
		}

		std::string exampleSection(const std::vector<Example>& examples)
		{
			std::vector<Entry> entries;
			for (const Example& example : examples)
			{
				entries.push_back({"example", pageName(example), example.title, example.file, example.file, example.text});
			}
			return section("Examples", entries);
		}

		std::string valueSection(const std::vector<const UEnum*>& enumerations)
		{
			std::vector<Entry> entries;
			for (const UEnum* values : enumerations)
			{
				std::vector<std::string> names;
				for (const FEnumerator& value : values->Enumerators)
				{
					names.emplace_back(value.Name);
				}
				entries.push_back({"values", fmt::format("{}#{}", valuesPageName, values->Name), values->Name,
					fmt::format("{}", fmt::join(names, " ")), fmt::format("{}", fmt::join(names, ", ")), valueWords(*values)});
			}
			return section("Enumerations", entries);
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

		std::string nodeSection(const std::vector<NodeFacts>& nodes, const std::string& category)
		{
			std::vector<Entry> entries;
			for (const NodeFacts& facts : nodes)
			{
				if (facts.category == category)
				{
					entries.push_back(
						{kindName(facts.kind), pageName(facts), facts.title, facts.name, firstSentence(facts), searchWords(facts)});
				}
			}
			return section(categoryTitle(category), entries);
		}
	} // namespace

	std::string indexPage(const Reference& reference)
	{
		std::string body = "<h1>Nodes and script functions</h1>\n<p>Each page shows a node as the editor does, its pins, and scripts that "
						   "use it. Everything here comes from the headers, the guides and the examples.</p>\n" +
						   std::string(search) + "<div>\n" + guideSection(reference.guides);
		for (const std::string& category : categories(reference.nodes))
		{
			body += nodeSection(reference.nodes, category);
		}
		body += valueSection(reference.enumerations()) + exampleSection(reference.examples) + "</div>\n";
		return htmlPage("Corvane node reference", body, "<script src=\"search.js\"></script>\n");
	}
} // namespace Program
