#pragma once

#include "Reflection.h"

namespace Program
{
	/** @return an enumeration in HTML: a heading that links can name, and what its values mean. */
	std::string valueTable(const UEnum& values);
} // namespace Program
