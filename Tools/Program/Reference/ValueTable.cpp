#include "ValueTable.h"

#include "Html.h"

#include <fmt/format.h>

namespace Program
{
	std::string valueTable(const UEnum& values)
	{
		std::string rows;
		for (const FEnumerator& value : values.Enumerators)
		{
			rows += fmt::format("<tr><th scope=\"row\"><code>{}</code></th><td class=\"type\">{}</td><td>{}</td><td>{}</td></tr>\n",
				escapeHtml(value.Name), value.Value, escapeHtml(value.DisplayName), escapeHtml(value.Comment));
		}
		return fmt::format("<h2 id=\"{0}\">Values of {0}</h2>\n<p>{1}</p>\n<table>\n<thead><tr><th scope=\"col\">In scripts</th>"
						   "<th scope=\"col\">Number</th><th scope=\"col\">In the editor</th><th scope=\"col\">Meaning</th></tr></thead>\n"
						   "<tbody>\n{2}</tbody>\n</table>\n",
			escapeHtml(values.Name), escapeHtml(FindMeta(values.Meta, "Comment")), rows);
	}
} // namespace Program
