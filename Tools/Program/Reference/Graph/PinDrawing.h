#pragma once

#include "Graph/Graph.h"

/** The small pieces of a node's drawing. Lengths are pixels; y is the middle of a piece. */
namespace Program
{
	constexpr double pinSize = 16;

	/** How a piece of text looks. */
	struct TextStyle
	{
		double size;
		std::string_view colour;
		std::string_view more = ""; // further attributes
	};
	constexpr TextStyle titleStyle{15, "#ffffff", " font-weight=\"600\""};
	constexpr TextStyle subtitleStyle{12, "#e3e5e8", " font-style=\"italic\""};
	constexpr TextStyle labelStyle{13, "#f0f1f3"};
	constexpr TextStyle valueStyle{12, "#d6d8dc"};

	/** An estimate for a common sans-serif font: nothing here knows the fonts of the reader. */
	double textWidth(std::string_view text, const TextStyle& style);

	/** @param x  where the text begins, or ends when it is anchored at its end. */
	std::string drawText(double x, double y, std::string_view text, const TextStyle& style, std::string_view anchor = "start");

	/** @return the colour of what a pin carries, and of its wires. */
	std::string_view colourOf(const PinType& type);

	/**
	 * An arrow for executions, a ring for a single value, a grid for a list, two columns for a map, a square for an event.
	 * @param x  its left side. @param isConnected  whether it is filled.
	 */
	std::string drawPin(double x, double y, const PinType& type, bool isConnected);

	/** @return whether the editor lets one type in the value of an input that is not connected. */
	bool hasValueBox(const PinType& type);
	double valueBoxWidth(const GraphPin& pin);
	std::string drawValueBox(double x, double y, const GraphPin& pin);
} // namespace Program
