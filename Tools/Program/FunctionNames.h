#pragma once

#include "Reflection.h"

namespace Program
{
	/**
	 * @param name  "Class.function", or the function's name alone, in any case.
	 * Throws UsageError, with the name that may have been meant, when there is none or more than one.
	 */
	const Script::Function& functionNamed(const std::string& name);

	/** @return the pins that a call may set. */
	std::vector<std::string> inputNames(const Script::Function& function);
} // namespace Program
