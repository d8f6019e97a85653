#pragma once

#include "UObject/Class.h"

#include <optional>
#include <string>
#include <vector>

namespace Program
{
	/** What the reference tells about one field of a struct. */
	struct FieldFacts
	{
		std::string name; // as scripts write it
		const FPropertyType* type;
		std::string defaultText; // empty: scripts only read it
		std::vector<std::string> texts; // paragraphs

		/** @return the default as a pin has it: a text without its quotes; nothing when the field has none. */
		std::optional<std::string> presetText() const;
	};

	/** The fields that scripts see; none of a record that they hand on as it is. */
	std::vector<FieldFacts> fieldsOf(const UScriptStruct& type);
} // namespace Program
