#include "Graph/PinDrawing.h"

#include "Html.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr double checkBoxSide = 15;
		constexpr double boldFactor = 1.12; // bold characters are that much wider

		/** How wide characters are in the widest of the usual fonts at the size 1: text may leave room, it must not overlap. */
		struct WidthClass
		{
			std::string_view characters;
			double width;
		};
		constexpr WidthClass widthClasses[] = {
			{"ijlI'", 0.28},
			{".,:;!J/ ", 0.33},
			{"ft-", 0.39},
			{"r()", 0.41},
			{"cszL_\"", 0.56},
			{"ABEKPSVXYZ", 0.69},
			{"CDHNRU", 0.76},
			{"GOQ", 0.79},
			{"w", 0.82},
			{"M", 0.87},
			{"mW", 0.98},
		};
		constexpr double commonWidth = 0.63;

		struct CategoryColour
		{
			std::string_view category;
			std::string_view colour;
		};
		constexpr CategoryColour categoryColours[] = {
			{"bool", "#c8171d"},
			{"byte", "#128c7e"},
			{"int", "#1fe3af"},
			{"int64", "#ace3af"},
			{"real", "#a1ff45"},
			{"string", "#ff2fd6"},
			{"struct", "#3b82e6"},
			{"object", "#00a8f2"},
			{"delegate", "#ff3838"},
		};

		std::string_view colourOf(std::string_view category)
		{
			const auto isSame = [&](const CategoryColour& entry) { return entry.category == category; };
			const auto found = std::find_if(std::begin(categoryColours), std::end(categoryColours), isSame);
			return found == std::end(categoryColours) ? "#ffffff" : found->colour;
		}

		std::string drawSquare(double x, double y, double width, std::string_view colour)
		{
			return fmt::format(R"(<rect x="{}" y="{}" width="{}" height="3.5" fill="{}"/>)", x, y, width, colour);
		}

		std::string drawGrid(double x, double y, std::string_view colour)
		{
			std::string svg;
			for (int cell = 0; cell < 9; ++cell)
			{
				svg += drawSquare(x + 2 + cell % 3 * 4.5, y - 6.5 + cell / 3 * 4.5, 3.5, colour);
			}
			return svg;
		}

		std::string drawColumns(double x, double y, std::string_view keyColour, std::string_view valueColour)
		{
			std::string svg;
			for (int row = 0; row < 3; ++row)
			{
				svg += drawSquare(x + 1, y - 6.5 + row * 4.5, 4, keyColour);
				svg += drawSquare(x + 6.5, y - 6.5 + row * 4.5, 8, valueColour);
			}
			return svg;
		}

		std::string drawArrow(double x, double y, bool isConnected)
		{
			return fmt::format(R"(<path d="M{} {}h6l6 6l-6 6h-6z" fill="{}" stroke="#ffffff" stroke-width="1.6" stroke-linejoin="round"/>)",
				x + 2, y - 6, isConnected ? "#ffffff" : "none");
		}

		std::string drawRing(double x, double y, std::string_view colour, bool isConnected)
		{
			return fmt::format(R"(<circle cx="{}" cy="{}" r="4.6" fill="{}" stroke="{}" stroke-width="2.4"/>)", x + 6.5, y,
					   isConnected ? colour : "#0d0d0f", colour) +
				   fmt::format(R"(<path d="M{} {}l3.6 3.4l-3.6 3.4z" fill="{}"/>)", x + 12.4, y - 3.4, colour);
		}

		std::string drawEventSquare(double x, double y, std::string_view colour, bool isConnected)
		{
			return fmt::format(R"(<rect x="{}" y="{}" width="9" height="9" rx="2" fill="{}" stroke="{}" stroke-width="2"/>)", x + 3,
				y - 4.5, isConnected ? colour : "#0d0d0f", colour);
		}

		std::string drawFrame(double x, double y, double width, double height)
		{
			return fmt::format(
				R"(<rect x="{}" y="{}" width="{}" height="{}" rx="3" fill="#0d0d0f" stroke="#5b5d63"/>)", x, y - height / 2, width, height);
		}

		std::string drawTick(double x, double y)
		{
			return fmt::format(R"(<path class="tick" d="M{} {}l3 3.5l6 -7" fill="none" stroke="#4aa3ff" stroke-width="2"/>)", x + 3, y);
		}

		bool isList(const PinType& type)
		{
			return type.category == "byte" && !type.object.empty();
		}
	} // namespace

	double textWidth(std::string_view text, const TextStyle& style)
	{
		double units = 0;
		for (const char c : text)
		{
			const auto has = [c](const WidthClass& entry) { return entry.characters.find(c) != std::string_view::npos; };
			const auto found = std::find_if(std::begin(widthClasses), std::end(widthClasses), has);
			units += found == std::end(widthClasses) ? commonWidth : found->width;
		}
		return std::ceil(units * style.size * (style.more.empty() ? 1 : boldFactor));
	}

	std::string drawText(double x, double y, std::string_view text, const TextStyle& style, std::string_view anchor)
	{
		return fmt::format(R"(<text x="{}" y="{}" font-size="{}" fill="{}"{} text-anchor="{}">{}</text>)", x, y + style.size * 0.35,
			style.size, style.colour, style.more, anchor, escapeHtml(text));
	}

	std::string_view colourOf(const PinType& type)
	{
		return colourOf(type.category);
	}

	std::string drawPin(double x, double y, const PinType& type, bool isConnected)
	{
		const std::string_view colour = colourOf(type);
		if (type.isExecution())
		{
			return drawArrow(x, y, isConnected);
		}
		if (type.category == "delegate")
		{
			return drawEventSquare(x, y, colour, isConnected);
		}
		if (type.container == "Array")
		{
			return drawGrid(x, y, colour);
		}
		return type.container == "Map" ? drawColumns(x, y, colour, colourOf(type.mapValue)) : drawRing(x, y, colour, isConnected);
	}

	bool hasValueBox(const PinType& type)
	{
		static constexpr std::string_view categories[] = {"bool", "byte", "int", "int64", "real", "string"};
		return type.container.empty() && std::find(std::begin(categories), std::end(categories), type.category) != std::end(categories);
	}

	double valueBoxWidth(const GraphPin& pin)
	{
		return pin.type.category == "bool" ? checkBoxSide
										   : std::max(textWidth(pin.shownValue, valueStyle) + 14, 44.0) + (isList(pin.type) ? 16 : 0);
	}

	std::string drawValueBox(double x, double y, const GraphPin& pin)
	{
		const double width = valueBoxWidth(pin);
		if (pin.type.category == "bool")
		{
			return drawFrame(x, y, width, checkBoxSide) + (pin.value == "true" ? drawTick(x, y) : "");
		}
		const std::string arrow = fmt::format(R"(<path d="M{} {}h8l-4 5z" fill="#c3c5ca"/>)", x + width - 15, y - 2);
		return drawFrame(x, y, width, 20) + drawText(x + 7, y, pin.shownValue, valueStyle) + (isList(pin.type) ? arrow : "");
	}
} // namespace Program
