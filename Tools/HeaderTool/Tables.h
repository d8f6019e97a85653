#pragma once

#include "Model.h"

/** Pieces of C++ text that the tables of a generated source are made of. */
namespace HeaderTool
{
	/**
	 * The metadata as the registry keeps it: what the meta list says, then the specifiers that carry a text or tell scripts something,
	 * then the documentation comment.
	 * A key without a value has the value "true".
	 */
	std::vector<std::pair<std::string, std::string>> metaEntries(const Specifiers& specifiers);

	/** @return the table called `name`, or an empty text when there are no entries: there are no empty arrays. */
	std::string metaTable(const std::string& name, const Specifiers& specifiers);

	/** @return what refers to the table that metaTable made, or `{}`. */
	std::string metaReference(const std::string& name, const Specifiers& specifiers);

	/** @return the type of the stored value: no reference, no const. */
	std::string storedType(const TypeDef& type);

	/**
	 * The parameter tables of a function or delegate.
	 * @param suffix  what follows the names "Parameters" and "ParameterMeta".
	 * @param result  the return value, or null; it comes last.
	 */
	std::string parameterTable(const std::string& suffix, const std::vector<ParameterDef>& parameters, const ParameterDef* result);
} // namespace HeaderTool
