#include "FieldFacts.h"
#include "Graph/GraphNodes.h"
#include "GraphFigure.h"
#include "Html.h"
#include "LinkedText.h"
#include "ReferencePages.h"
#include "ValueTable.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		std::string shownDefault(const PinFacts& pin)
		{
			const std::string declared = pin.defaultText ? pin.defaultText->empty() ? "\"\"" : *pin.defaultText : "";
			std::string html = declared.empty() ? "" : fmt::format("<code>{}</code>", escapeHtml(declared));
			if (pin.mayStayUnconnected)
			{
				html += "<span class=\"mark\">may stay unconnected</span>";
			}
			return html;
		}

		std::string shownType(const FPropertyType& type)
		{
			const std::string name = escapeHtml(shortTypeName(type));
			const bool hasTable =
				type.Kind == EPropertyKind::Enum || (type.Kind == EPropertyKind::Struct && !type.Struct()->Fields.empty());
			return hasTable ? fmt::format("<a href=\"#{0}\">{0}</a>", name) : name;
		}

		/** @return nothing when there are no such pins. */
		std::string pinTable(const NodeFacts& facts, bool isLeft, const LinkedText& linked)
		{
			std::string rows;
			for (const PinFacts& pin : facts.pins)
			{
				if (pin.isLeft() == isLeft)
				{
					rows += fmt::format("<tr><th scope=\"row\"><code>{}</code></th><td class=\"type\">{}</td>{}<td>{}</td></tr>\n",
						escapeHtml(pin.name), shownType(*pin.type),
						isLeft ? fmt::format("<td class=\"default\">{}</td>", shownDefault(pin)) : "", linked.paragraphs(pin.texts));
				}
			}
			return rows.empty() ? rows
								: fmt::format("<h2>{}</h2>\n<table>\n<thead><tr><th scope=\"col\">Pin</th><th scope=\"col\">Type</th>{}"
											  "<th scope=\"col\">Meaning</th></tr></thead>\n<tbody>\n{}</tbody>\n</table>\n",
									  isLeft ? "Inputs" : "Outputs", isLeft ? "<th scope=\"col\">Default</th>" : "", rows);
		}

		std::string outcomeList(const NodeFacts& facts, const LinkedText& linked)
		{
			std::string rows;
			for (const OutcomeFacts& outcome : facts.outcomes)
			{
				rows += fmt::format("<dt>{} <code>{}</code></dt>\n<dd>{}</dd>\n", escapeHtml(outcome.title), escapeHtml(outcome.name),
					linked.paragraphs(outcome.texts));
			}
			return rows.empty() ? rows : fmt::format("<h2>Outcomes</h2>\n<dl>\n{}</dl>\n", rows);
		}

		std::string fieldTable(const UScriptStruct& record, const LinkedText& linked)
		{
			std::string rows;
			for (const FieldFacts& field : fieldsOf(record))
			{
				const std::string preset = field.defaultText.empty() ? "" : fmt::format("<code>{}</code>", escapeHtml(field.defaultText));
				rows += fmt::format("<tr><th scope=\"row\"><code>{}</code></th><td class=\"type\">{}</td><td class=\"default\">{}</td>"
									"<td>{}</td></tr>\n",
					escapeHtml(field.name), shownType(*field.type), preset, linked.paragraphs(field.texts));
			}
			return fmt::format("<h2 id=\"{0}\">Fields of {0}</h2>\n<p>{1}</p>\n<table>\n<thead><tr><th scope=\"col\">Field</th>"
							   "<th scope=\"col\">Type</th><th scope=\"col\">Default</th><th scope=\"col\">Meaning</th></tr></thead>\n"
							   "<tbody>\n{2}</tbody>\n</table>\n",
				escapeHtml(record.Name), escapeHtml(FindMeta(record.Meta, "Comment")), rows);
		}

		std::string fieldTables(const NodeFacts& facts, const LinkedText& linked)
		{
			std::string html;
			for (const UScriptStruct* record : facts.structs())
			{
				html += fieldTable(*record, linked);
			}
			return html;
		}

		std::string valueTables(const NodeFacts& facts)
		{
			std::string html;
			for (const UEnum* values : facts.enumerations())
			{
				html += valueTable(*values);
			}
			return html;
		}

		std::string exampleList(const Reference& reference, const NodeFacts& facts)
		{
			std::string html;
			for (const Example* example : reference.examplesOf(facts))
			{
				html += fmt::format("<details{}>\n<summary>{} <span class=\"file\">Examples/{}</span></summary>\n"
									"<pre tabindex=\"0\"><code>{}</code></pre>\n</details>\n",
					html.empty() ? " open=\"open\"" : "", escapeHtml(example->title), escapeHtml(example->file), escapeHtml(example->text));
			}
			return html.empty() ? html : "<h2>Examples</h2>\n" + html;
		}

		std::string guideList(const Reference& reference, const NodeFacts& facts)
		{
			std::string items;
			for (const Guide* guide : reference.guidesOf(facts))
			{
				items += fmt::format("<li><a href=\"{}\">{}</a></li>\n", escapeHtml(pageName(*guide)), escapeHtml(guide->title));
			}
			return items.empty() ? items : fmt::format("<h2>Guides</h2>\n<ul>\n{}</ul>\n", items);
		}

		/** The events that the examples of a function listen to: there its results arrive. */
		std::string eventList(const Reference& reference, const NodeFacts& facts)
		{
			std::string items;
			for (const NodeFacts& event : reference.nodes)
			{
				const std::vector<const Example*> examples = reference.examplesOf(facts);
				const auto listens = [&](const Example* example) { return example->uses(event.ownName()); };
				if (event.kind == NodeKind::Event && event.name != facts.name && std::any_of(examples.begin(), examples.end(), listens))
				{
					items += fmt::format(
						"<li><a href=\"{}\"><code>{}</code></a></li>\n", escapeHtml(pageName(event)), escapeHtml(event.ownName()));
				}
			}
			return items.empty() ? items : fmt::format("<h2>Events in these examples</h2>\n<ul>\n{}</ul>\n", items);
		}
	} // namespace

	std::string nodePage(const Reference& reference, const NodeFacts& facts)
	{
		const LinkedText linked(reference.nodes, facts);
		const std::string head = fmt::format("<p class=\"path\"><span class=\"kind {0}\">{0}</span> {1}</p>\n<h1>{2}</h1>\n"
											 "<p class=\"path\"><code>{3}</code></p>\n",
			kindName(facts.kind), escapeHtml(facts.category), escapeHtml(facts.title), escapeHtml(facts.name));
		return htmlPage(facts.title,
			head + linked.paragraphs(facts.texts) + graphFigure(graphOf(facts)) + outcomeList(facts, linked) +
				pinTable(facts, true, linked) + pinTable(facts, false, linked) + fieldTables(facts, linked) + valueTables(facts) +
				guideList(reference, facts) + exampleList(reference, facts) + eventList(reference, facts),
			graphScripts);
	}
} // namespace Program
