#include "Graph/NodeDrawing.h"

#include "Graph/PinDrawing.h"
#include "Html.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr double rowHeight = 27;
		constexpr double margin = 10;
		constexpr double gap = 8; // between the pieces of a row
		constexpr double middle = 42; // between the two sides
		constexpr double iconWidth = 18; // before the title
		constexpr double clockWidth = 40;

		std::string_view titleColour(NodeLook look)
		{
			static constexpr std::array<std::string_view, 4> colours = {"#3f6b3f", "#2c5f8a", "#2c5f8a", "#8e1f1f"};
			return colours[static_cast<size_t>(look)];
		}

		double titleHeight(const GraphNode& node)
		{
			return node.subtitle.empty() ? 32 : 48;
		}

		/** The event that one binds stands in the title. */
		bool isInTitle(const GraphPin& pin)
		{
			return pin.isOutput && pin.type.category == "delegate";
		}

		bool showsValue(const Graph& graph, PinPlace place)
		{
			const GraphPin& pin = graph[place];
			return !pin.isOutput && hasValueBox(pin.type) && !graph.isConnected(place);
		}

		/** The width that a pin takes with its label and its value. */
		double pinWidth(const Graph& graph, PinPlace place)
		{
			const GraphPin& pin = graph[place];
			const double label = margin + pinSize + gap + textWidth(pin.title, labelStyle);
			return label + (showsValue(graph, place) ? gap + valueBoxWidth(pin) : 0);
		}

		double titleWidth(const GraphNode& node)
		{
			return std::max(textWidth(node.title, titleStyle), textWidth(node.subtitle, subtitleStyle)) + 2 * margin + iconWidth +
				   clockWidth;
		}

		std::string drawPinAt(const Graph& graph, PinPlace place, Point end)
		{
			const GraphPin& pin = graph[place];
			const double x = pin.isOutput ? end.x - margin - pinSize : margin;
			const double labelX = pin.isOutput ? x - gap : x + pinSize + gap;
			std::string svg = drawPin(x, end.y, pin.type, graph.isConnected(place));
			svg += pin.title.empty() ? "" : drawText(labelX, end.y, pin.title, labelStyle, pin.isOutput ? "end" : "start");
			if (showsValue(graph, place))
			{
				svg += drawValueBox(labelX + textWidth(pin.title, labelStyle) + gap, end.y, pin);
			}
			return fmt::format("<g class=\"pin\" data-pin=\"{}\">{}</g>\n", escapeHtml(pin.name), svg);
		}

		std::string drawClock(double x, double y)
		{
			return fmt::format(R"(<circle cx="{0}" cy="{1}" r="7" fill="none" stroke="#ffffff" stroke-width="1.5"/>)"
							   R"(<path d="M{0} {2}V{1}h4" fill="none" stroke="#ffffff" stroke-width="1.5"/>)",
				x, y, y - 4.5);
		}

		/** An arrow in a diamond for what begins by itself, the sign of a function for what is called. */
		std::string drawIcon(NodeLook look, double x, double y)
		{
			static constexpr TextStyle functionStyle{16, "#9fd0ff", " font-style=\"italic\" font-weight=\"600\""};
			return look == NodeLook::Event
					   ? fmt::format(R"(<path d="M{} {}l6 6l-6 6l-6 -6z" fill="none" stroke="#ffffff" stroke-width="1.5"/>)", x + 6, y - 6)
					   : drawText(x + 2, y, "f", functionStyle);
		}

		/** Titles grow dark to their right. */
		std::string drawTitle(const GraphNode& node, double width)
		{
			const std::string outline = fmt::format("M1 {0}V9a8 8 0 0 1 8 -8H{1}a8 8 0 0 1 8 8V{0}z", titleHeight(node), width - 9);
			std::string svg =
				fmt::format(R"svg(<path d="{0}" fill="{1}"/><path d="{0}" fill="url(#fade)"/>)svg", outline, titleColour(node.look));
			svg += drawIcon(node.look, margin, 16);
			svg += drawText(margin + iconWidth, 16, node.title, titleStyle);
			svg += node.subtitle.empty() ? "" : drawText(margin + iconWidth, 34, node.subtitle, subtitleStyle);
			return svg + (node.look == NodeLook::Latent ? drawClock(width - 18, 16) : "");
		}

		std::string drawFrame(const NodeShape& shape, std::string_view fill, std::string_view stroke)
		{
			return fmt::format(R"(<rect x="1" y="1" width="{}" height="{}" rx="8" fill="{}" stroke="{}" stroke-width="1.5"/>)",
				shape.width - 2, shape.height - 2, fill, stroke);
		}
	} // namespace

	NodeShape shapeOf(const Graph& graph, size_t index)
	{
		const GraphNode& node = graph.nodes[index];
		NodeShape shape;
		std::array<double, 2> widths{}; // of the left and the right side
		std::array<size_t, 2> rows{};
		for (size_t pin = 0; pin < node.pins.size(); ++pin)
		{
			const bool isRight = node.pins[pin].isOutput;
			const bool takesRow = !node.pins[pin].isHidden && !isInTitle(node.pins[pin]);
			const double row = static_cast<double>(rows[isRight]) + 0.5;
			shape.pins.push_back({0, isInTitle(node.pins[pin]) ? 16 : titleHeight(node) + rowHeight * row + margin / 2});
			rows[isRight] += takesRow ? 1 : 0;
			widths[isRight] = std::max(widths[isRight], takesRow ? pinWidth(graph, {index, pin}) : 0);
		}
		shape.width = std::max(widths[0] + middle + widths[1], titleWidth(node));
		shape.height = titleHeight(node) + rowHeight * static_cast<double>(std::max(rows[0], rows[1])) + margin;
		for (size_t pin = 0; pin < node.pins.size(); ++pin)
		{
			shape.pins[pin].x = node.pins[pin].isOutput ? shape.width : 0;
		}
		return shape;
	}

	std::string drawNode(const Graph& graph, size_t index)
	{
		const GraphNode& node = graph.nodes[index];
		const NodeShape shape = shapeOf(graph, index);
		std::string svg = fmt::format("<g class=\"node\" transform=\"translate({} {})\">\n", node.x, node.y);
		svg += drawFrame(shape, "#1d1e21", "#08080a") + drawTitle(node, shape.width) + "\n";
		for (size_t pin = 0; pin < node.pins.size(); ++pin)
		{
			svg += node.pins[pin].isHidden ? "" : drawPinAt(graph, {index, pin}, shape.pins[pin]);
		}
		return svg + drawFrame(shape, "none", "#08080a") + "</g>\n";
	}
} // namespace Program
