#pragma once

#include "UObject/PropertyType.h"

#include <nlohmann/json.hpp>

#include <span>

struct FParameter;

/** Values of reflected types as JSON and as words of a command line. */
namespace Program
{
	using Json = nlohmann::ordered_json; // pins keep their order

	/**
	 * @return the value; bytes become JSON's binary type, records and objects a text that names their type.
	 */
	Json toJson(const FPropertyType& type, const void* value);

	/** The same for a row of parameters, by name: one address per parameter. */
	Json toJson(std::span<const FParameter> parameters, void* const* values);

	/**
	 * Sets a value from a word: texts and bytes as they stand, enumerations by name or number, everything else as JSON; a map
	 * is an object or a list of [key, value]. Throws Script::ScriptError when the word is no such value.
	 */
	void fromWord(const std::string& word, const FPropertyType& type, void* value);
} // namespace Program
