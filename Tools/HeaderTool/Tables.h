#pragma once

#include "Model.h"

/** Pieces of C++ text that the tables of a generated source are made of. */
namespace HeaderTool
{
	/** A table, and what refers to it. There are no empty arrays: a table without rows is no text. */
	struct Table
	{
		std::string text;
		std::string reference = "{}";
	};

	/** @param declaration  "static constexpr FEnumerator Enumerators[]" */
	Table makeTable(std::string_view declaration, const std::string& name, const std::string& rows);

	/**
	 * The metadata as the registry keeps it: what the meta list says, then the specifiers that carry a text or tell scripts
	 * something, then the documentation comment. A key without a value has the value "true".
	 */
	Table metaTable(const std::string& name, const Specifiers& specifiers);

	/** @return the type of the stored value: no reference, no const. */
	std::string storedType(const TypeDef& type);

	/**
	 * The parameter table of a function or delegate.
	 * @param suffix  what follows the word "Parameters" in its name.
	 * @param result  the return value, if there is one; it comes last.
	 */
	Table parameterTable(const std::string& suffix, const std::vector<ParameterDef>& parameters, const std::optional<ParameterDef>& result);
} // namespace HeaderTool
