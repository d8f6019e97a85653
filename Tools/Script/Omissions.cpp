#include "Omissions.h"

#include <fmt/format.h>

namespace Script
{
	uint64 Omissions::noteBuilt(const std::string& place)
	{
		unstarted.emplace_hint(unstarted.end(), ++lastNumber, place);
		return lastNumber;
	}

	void Omissions::noteUnheardFailure(const std::string& place)
	{
		if (unheardFailures++ == 0)
		{
			firstUnheard = place;
		}
	}

	std::vector<std::string> Omissions::describe() const
	{
		std::vector<std::string> lines;
		if (!unstarted.empty())
		{
			lines.push_back(fmt::format(
				"requests that were built and never executed: {}, the first by {}", unstarted.size(), unstarted.begin()->second));
		}
		if (unheardFailures > 0)
		{
			lines.push_back(
				fmt::format("nodes that failed without a handler for OnFail: {}, the first is {}", unheardFailures, firstUnheard));
		}
		return lines;
	}
} // namespace Script
