#pragma once

#include "ReferencePages.h"

namespace Program
{
	/** @return everything that is registered, with the examples. */
	Reference collectReference();

	/**
	 * Writes every page with stylesheet and script. Throws std::runtime_error naming a file that cannot be written.
	 * @param directory  made when it is missing; other files in it stay.
	 */
	void writeReference(const Reference& reference, const std::string& directory);
} // namespace Program
