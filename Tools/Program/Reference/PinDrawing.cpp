#include "PinDrawing.h"

#include "Html.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr double valueFontSize = 12;

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

		std::string_view colourOf(const FPropertyType& type)
		{
			switch (type.Kind)
			{
			case EPropertyKind::Bool:
				return "#c8171d";
			case EPropertyKind::Byte:
			case EPropertyKind::Enum:
				return "#128c7e";
			case EPropertyKind::Int:
				return "#1fe3af";
			case EPropertyKind::Int64:
				return "#ace3af";
			case EPropertyKind::Float:
			case EPropertyKind::Double:
				return "#a1ff45";
			case EPropertyKind::String:
				return "#ff2fd6";
			case EPropertyKind::DateTime:
			case EPropertyKind::Struct:
				return "#3b82e6";
			case EPropertyKind::Object:
				return "#00a8f2";
			case EPropertyKind::Array:
			case EPropertyKind::Map:
				return colourOf(*type.Inner());
			}
			return "#ffffff";
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

		/** @return what stands in the box of a value that nobody has changed. */
		std::string shownDefault(const PinFacts& pin)
		{
			const EPropertyKind kind = pin.type->Kind;
			if (kind == EPropertyKind::Enum)
			{
				const UEnum& values = *pin.type->Enum();
				const FEnumerator* const declared = pin.defaultText ? values.FindByName(pin.defaultText->c_str()) : values.FindByValue(0);
				return declared ? declared->DisplayName : values.Enumerators.front().DisplayName;
			}
			const char* const fallback = kind == EPropertyKind::String                                   ? ""
										 : kind == EPropertyKind::Float || kind == EPropertyKind::Double ? "0.0"
																										 : "0";
			return pin.defaultText.value_or(fallback);
		}

		std::string drawBox(double x, double y, double width, double height)
		{
			return fmt::format(
				R"(<rect x="{}" y="{}" width="{}" height="{}" rx="3" fill="#0d0d0f" stroke="#5b5d63"/>)", x, y - height / 2, width, height);
		}

		ValueBox drawCheckBox(double x, double y, bool isTicked)
		{
			constexpr double side = 15;
			const std::string tick =
				fmt::format(R"(<path d="M{} {}l3 3.5l6 -7" fill="none" stroke="#4aa3ff" stroke-width="2"/>)", x + 3, y);
			return {drawBox(x, y, side, side) + (isTicked ? tick : ""), side};
		}

		ValueBox drawTextBox(double x, double y, const PinFacts& pin)
		{
			const bool isList = pin.type->Kind == EPropertyKind::Enum;
			const std::string text = shownDefault(pin);
			const double width = std::max(textWidth(text, valueFontSize) + 14, 44.0) + (isList ? 16 : 0);
			const std::string arrow = fmt::format(R"(<path d="M{} {}h8l-4 5z" fill="#c3c5ca"/>)", x + width - 15, y - 2);
			return {drawBox(x, y, width, 20) + drawText(x + 7, y + 4, text, "value", "#d6d8dc") + (isList ? arrow : ""), width};
		}
	} // namespace

	double textWidth(std::string_view text, double fontSize)
	{
		double units = 0;
		for (const char c : text)
		{
			const auto has = [c](const WidthClass& entry) { return entry.characters.find(c) != std::string_view::npos; };
			const auto found = std::find_if(std::begin(widthClasses), std::end(widthClasses), has);
			units += found == std::end(widthClasses) ? commonWidth : found->width;
		}
		return std::ceil(units * fontSize);
	}

	std::string drawText(
		double x, double y, std::string_view text, std::string_view cssClass, std::string_view colour, std::string_view anchor)
	{
		return fmt::format(
			R"(<text class="{}" x="{}" y="{}" fill="{}" text-anchor="{}">{}</text>)", cssClass, x, y, colour, anchor, escapeHtml(text));
	}

	std::string drawExecutionPin(double x, double y)
	{
		return fmt::format(
			R"(<path d="M{} {}h6l6 6l-6 6h-6z" fill="none" stroke="#ffffff" stroke-width="1.6" stroke-linejoin="round"/>)", x + 2, y - 6);
	}

	std::string drawDataPin(double x, double y, const FPropertyType& type)
	{
		const std::string_view colour = colourOf(type);
		if (type.Kind == EPropertyKind::Array)
		{
			return drawGrid(x, y, colour);
		}
		if (type.Kind == EPropertyKind::Map)
		{
			return drawColumns(x, y, colour, colourOf(*type.Value()));
		}
		return fmt::format(R"(<circle cx="{}" cy="{}" r="4.6" fill="#0d0d0f" stroke="{}" stroke-width="2.4"/>)", x + 6.5, y, colour) +
			   fmt::format(R"(<path d="M{} {}l3.6 3.4l-3.6 3.4z" fill="{}"/>)", x + 12.4, y - 3.4, colour);
	}

	ValueBox drawValueBox(double x, double y, const PinFacts& pin)
	{
		switch (pin.type->Kind)
		{
		case EPropertyKind::Bool:
			return drawCheckBox(x, y, pin.defaultText == "true");
		case EPropertyKind::Byte:
		case EPropertyKind::Int:
		case EPropertyKind::Int64:
		case EPropertyKind::Float:
		case EPropertyKind::Double:
		case EPropertyKind::String:
		case EPropertyKind::Enum:
			return drawTextBox(x, y, pin);
		default:
			return {};
		}
	}
} // namespace Program
