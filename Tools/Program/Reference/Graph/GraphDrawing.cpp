#include "Graph/GraphDrawing.h"

#include "Graph/NodeDrawing.h"
#include "Graph/PinDrawing.h"
#include "Html.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr double border = 24;

		/** What drawings of nodes and their ground refer to. */
		constexpr std::string_view definitions = R"(<defs>
<linearGradient id="fade">
<stop offset="0.2" stop-color="#1d1e21" stop-opacity="0"/>
<stop offset="1" stop-color="#1d1e21" stop-opacity="0.85"/>
</linearGradient>
<pattern id="grid" width="16" height="16" patternUnits="userSpaceOnUse"><path d="M16 0H0V16" fill="none" stroke="#343539"/></pattern>
</defs>
)";

		Point placeOf(const Graph& graph, PinPlace place)
		{
			const Point pin = shapeOf(graph, place.node).pins[place.pin];
			return {graph.nodes[place.node].x + pin.x, graph.nodes[place.node].y + pin.y};
		}

		/** Wires leave and arrive level, the more so the farther they go. */
		std::string drawWire(const Graph& graph, const Wire& wire)
		{
			const Point from = placeOf(graph, wire.from);
			const Point to = placeOf(graph, wire.to);
			const double reach = std::max(30.0, (std::abs(to.x - from.x) + std::abs(to.y - from.y)) / 3);
			const PinType& type = graph[wire.from].type;
			return fmt::format(R"(<path class="wire" d="M{} {}C{:.0f} {} {:.0f} {} {} {}" fill="none" stroke="{}" stroke-width="{}"/>)",
					   from.x - 6, from.y, from.x + reach, from.y, to.x - reach, to.y, to.x + 6, to.y, colourOf(type),
					   type.isExecution() ? 3 : 2) +
				   "\n";
		}

		/** What a reader who sees no picture hears. */
		std::string description(const Graph& graph)
		{
			std::string text;
			for (const GraphNode& node : graph.nodes)
			{
				text += fmt::format("{}{}", text.empty() ? "" : ", ", node.title);
			}
			return fmt::format("The nodes {}, with {} wires.", text, graph.wires.size());
		}

		Point sizeOf(const Graph& graph)
		{
			Point size;
			for (size_t node = 0; node < graph.nodes.size(); ++node)
			{
				const NodeShape shape = shapeOf(graph, node);
				size.x = std::max(size.x, graph.nodes[node].x + shape.width);
				size.y = std::max(size.y, graph.nodes[node].y + shape.height);
			}
			return {size.x + 2 * border, size.y + 2 * border};
		}
	} // namespace

	std::string drawGraph(const Graph& graph)
	{
		const Point size = sizeOf(graph);
		std::string svg =
			fmt::format(R"(<svg class="graph" role="img" width="{0:.0f}" height="{1:.0f}" viewBox="-{2} -{2} {0:.0f} {1:.0f}" )"
						R"(font-family="Helvetica Neue, Arial, Liberation Sans, DejaVu Sans, sans-serif" )"
						R"(xmlns="http://www.w3.org/2000/svg">)",
				size.x, size.y, border);
		svg += fmt::format("\n<title>{}</title>\n<desc>{}</desc>\n", escapeHtml(graph.title), escapeHtml(description(graph)));
		svg += definitions;
		for (const char* fill : {"#2a2b2e", "url(#grid)"})
		{
			svg += fmt::format(
				R"(<rect x="-{0}" y="-{0}" width="{1:.0f}" height="{2:.0f}" rx="6" fill="{3}"/>)", border, size.x, size.y, fill);
		}
		for (const Wire& wire : graph.wires)
		{
			svg += "\n" + drawWire(graph, wire);
		}
		for (size_t node = 0; node < graph.nodes.size(); ++node)
		{
			svg += "\n" + drawNode(graph, node);
		}
		return svg + "</svg>";
	}
} // namespace Program
