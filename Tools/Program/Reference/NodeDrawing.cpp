#include "NodeDrawing.h"

#include "Html.h"
#include "PinDrawing.h"

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
		constexpr double labelFontSize = 13;
		constexpr double titleFontSize = 15;
		constexpr double boldFactor = 1.12; // bold characters are that much wider
		constexpr std::string_view unconnectedMark = "may stay unconnected";

		/** One side of a row: an execution when there is no pin. */
		struct Side
		{
			std::string label;
			const PinFacts* pin = nullptr;
		};

		std::string_view titleColour(NodeKind kind)
		{
			static constexpr std::array<std::string_view, 4> colours = {"#3f6b3f", "#2c5f8a", "#2c5f8a", "#8e1f1f"};
			return colours[static_cast<size_t>(kind)];
		}

		std::vector<Side> leftSides(const NodeFacts& facts)
		{
			std::vector<Side> sides;
			if (facts.kind == NodeKind::Callable || facts.kind == NodeKind::Latent)
			{
				sides.emplace_back();
			}
			for (const PinFacts& pin : facts.pins)
			{
				if (pin.isLeft())
				{
					sides.push_back({pin.title, &pin});
				}
			}
			return sides;
		}

		std::vector<Side> rightSides(const NodeFacts& facts)
		{
			std::vector<Side> sides;
			if (facts.kind != NodeKind::Pure)
			{
				sides.emplace_back();
			}
			for (const OutcomeFacts& outcome : facts.outcomes)
			{
				sides.push_back({outcome.title});
			}
			for (const PinFacts& pin : facts.pins)
			{
				if (!pin.isLeft())
				{
					sides.push_back({pin.title, &pin});
				}
			}
			return sides;
		}

		/** Draws both sides of a node below its title. */
		class Body
		{
		public:
			Body(const NodeFacts& facts, double bodyTop)
				: left(leftSides(facts))
				, right(rightSides(facts))
				, top(bodyTop)
			{
				for (const Side& side : left)
				{
					const double y = rowMiddle(leftRows++);
					leftWidth = std::max(leftWidth, drawLeft(side, y));
				}
				for (const Side& side : right)
				{
					rightWidth = std::max(rightWidth, margin + pinSize + gap + textWidth(side.label, labelFontSize));
				}
			}

			double width() const { return leftWidth + middle + rightWidth; }
			double height() const { return rowHeight * static_cast<double>(std::max(left.size(), right.size())) + margin; }

			std::string drawn(double nodeWidth) const
			{
				std::string all = svg;
				for (size_t row = 0; row < right.size(); ++row)
				{
					all += drawRight(right[row], rowMiddle(row), nodeWidth);
				}
				return all;
			}

		private:
			double rowMiddle(size_t row) const { return top + rowHeight * (static_cast<double>(row) + 0.5) + margin / 2; }

			static std::string drawPin(const Side& side, double x, double y)
			{
				return side.pin ? drawDataPin(x, y, *side.pin->type) : drawExecutionPin(x, y);
			}

			/** @return where the side ends. */
			double drawLeft(const Side& side, double y)
			{
				double x = margin + pinSize + gap;
				svg += drawPin(side, margin, y) + (side.label.empty() ? "" : drawText(x, y + 4.5, side.label, "label", "#f0f1f3"));
				x += textWidth(side.label, labelFontSize);
				if (side.pin && side.pin->mayStayUnconnected)
				{
					svg += drawText(x + gap, y + 4.5, unconnectedMark, "mark", "#a3a6ad");
					x += gap + textWidth(unconnectedMark, labelFontSize - 2);
				}
				if (const ValueBox box = side.pin ? drawValueBox(x + gap, y, *side.pin) : ValueBox(); box.width > 0)
				{
					svg += box.svg;
					x += gap + box.width;
				}
				return x;
			}

			static std::string drawRight(const Side& side, double y, double nodeWidth)
			{
				const double x = nodeWidth - margin - pinSize;
				return drawPin(side, x, y) + (side.label.empty() ? "" : drawText(x - gap, y + 4.5, side.label, "label", "#f0f1f3", "end"));
			}

			const std::vector<Side> left;
			const std::vector<Side> right;
			const double top;
			size_t leftRows = 0;
			double leftWidth = 0;
			double rightWidth = 0;
			std::string svg;
		};

		std::string drawClock(double x, double y)
		{
			return fmt::format(R"(<circle cx="{0}" cy="{1}" r="7" fill="none" stroke="#ffffff" stroke-width="1.5"/>)"
							   R"(<path d="M{0} {2}V{1}h4" fill="none" stroke="#ffffff" stroke-width="1.5"/>)",
				x, y, y - 4.5);
		}

		std::string drawTitle(const NodeFacts& facts, double width, double height)
		{
			std::string svg = fmt::format(
				R"(<path d="M1 {0}V9a8 8 0 0 1 8 -8H{1}a8 8 0 0 1 8 8V{0}z" fill="{2}"/>)", height, width - 9, titleColour(facts.kind));
			svg += drawText(margin + 4, 21, facts.title, "title", "#ffffff");
			if (!facts.subtitle.empty())
			{
				svg += drawText(margin + 4, 38, facts.subtitle, "subtitle", "#e3e5e8");
			}
			return svg + (facts.kind == NodeKind::Latent ? drawClock(width - 18, 16) : "");
		}

		/** What a reader who sees no picture hears. */
		std::string description(const NodeFacts& facts)
		{
			std::string inputs;
			std::string outputs;
			for (const PinFacts& pin : facts.pins)
			{
				std::string& list = pin.isLeft() ? inputs : outputs;
				list += (list.empty() ? "" : ", ") + pin.name;
			}
			return fmt::format("Inputs: {}. Outputs: {}.", inputs.empty() ? "none" : inputs, outputs.empty() ? "none" : outputs);
		}
	} // namespace

	std::string drawNode(const NodeFacts& facts)
	{
		const double titleHeight = facts.subtitle.empty() ? 32 : 47;
		const Body body(facts, titleHeight);
		const double titleWidth =
			std::max(textWidth(facts.title, titleFontSize * boldFactor), textWidth(facts.subtitle, labelFontSize)) + 2 * margin + 40;
		const double width = std::max(body.width(), titleWidth);
		const double height = titleHeight + body.height();
		return fmt::format(
				   R"(<svg class="node" role="img" width="{0:.0f}" height="{1:.0f}" viewBox="0 0 {0:.0f} {1:.0f}" xmlns="http://www.w3.org/2000/svg">)",
				   width, height) +
			   fmt::format("<title>The node {}</title><desc>{}</desc>", escapeHtml(facts.title), escapeHtml(description(facts))) +
			   fmt::format(R"(<rect x="1" y="1" width="{:.0f}" height="{:.0f}" rx="8" fill="#1d1e21"/>)", width - 2, height - 2) +
			   drawTitle(facts, width, titleHeight) + body.drawn(width) +
			   fmt::format(
				   R"(<rect x="1" y="1" width="{:.0f}" height="{:.0f}" rx="8" fill="none" stroke="#08080a" stroke-width="1.5"/></svg>)",
				   width - 2, height - 2);
	}
} // namespace Program
