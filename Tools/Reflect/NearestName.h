#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Reflect
{
	/**
	 * What somebody may have meant by a name that is not there.
	 * @param candidates  the names that are there.
	 * @return the candidate that takes the fewest changed letters, or one that the name is a part of; empty when none is near.
	 */
	std::string nearestName(std::string_view name, const std::vector<std::string>& candidates);

	/** @return ", did you mean 'X'?" for the end of a message; empty when no candidate is near. */
	std::string suggestion(std::string_view name, const std::vector<std::string>& candidates);
} // namespace Reflect
