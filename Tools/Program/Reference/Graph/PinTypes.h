#pragma once

#include "Graph/Graph.h"

#include "UObject/PropertyType.h"

#include <optional>

namespace Program
{
	/** @return a reflected type in the editor's words. */
	PinType pinTypeOf(const FPropertyType& type);

	/** What a pin holds while nothing is connected. */
	struct PinValue
	{
		std::string text; // as the editor keeps it; empty for types whose value cannot be typed in
		std::string shown;
	};

	/** @param written  a value as headers and graphs write it; nothing = the type's own. Throws std::out_of_range for no enumerator. */
	PinValue pinValueOf(const FPropertyType& type, const std::optional<std::string>& written);
} // namespace Program
