#pragma once

#include "Reflection.h"

namespace Program
{
	/**
	 * @param name  "Class.function", or the function's name alone, in any case.
	 * @param alsoMeant  other names that a misspelt one may stand for.
	 * Throws InputError, with the name that may have been meant, when there is none or more than one.
	 */
	const Reflect::Function& functionNamed(const std::string& name, const std::vector<std::string>& alsoMeant = {});
} // namespace Program
