#include "GraphFigure.h"

#include "Graph/BlueprintText.h"
#include "Graph/GraphDrawing.h"
#include "Html.h"

#include <fmt/format.h>

namespace Program
{
	std::string graphFigure(const Graph& graph)
	{
		return fmt::format("<figure>\n<div class=\"drawing\" tabindex=\"0\" aria-label=\"Drawing\">{}</div>\n<figcaption>\n"
						   "<button type=\"button\" class=\"copy\" hidden=\"hidden\">Copy as Blueprint text</button>\n"
						   "<span>for the editor, where it is pasted into a graph. Nobody has pasted ours into an editor yet.</span>\n"
						   "<details>\n<summary>Blueprint text</summary>\n<pre tabindex=\"0\">{}</pre>\n</details>\n"
						   "</figcaption>\n</figure>\n",
			drawGraph(graph), escapeHtml(blueprintText(graph)));
	}
} // namespace Program
