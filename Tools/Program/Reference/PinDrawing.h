#pragma once

#include "NodeFacts.h"

/** The small pieces of a node's drawing. Lengths are pixels; y is the middle of a piece. */
namespace Program
{
	constexpr double pinSize = 16;

	/** An estimate for a common sans-serif font: nothing here knows the fonts of the reader. */
	double textWidth(std::string_view text, double fontSize);

	/** @param x  where the text begins, or ends when it is anchored at its end. */
	std::string drawText(
		double x, double y, std::string_view text, std::string_view cssClass, std::string_view colour, std::string_view anchor = "start");

	/** An arrow for executions. @param x  its left side, as below. */
	std::string drawExecutionPin(double x, double y);

	/** A ring for a single value, a grid for a list, two columns for a map, in the colours of the types. */
	std::string drawDataPin(double x, double y, const FPropertyType& type);

	/** Where the editor lets one type in the value of an input that is not connected. Empty for types without such a place. */
	struct ValueBox
	{
		std::string svg;
		double width = 0;
	};
	ValueBox drawValueBox(double x, double y, const PinFacts& pin);
} // namespace Program
