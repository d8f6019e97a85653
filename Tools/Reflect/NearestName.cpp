#include "NearestName.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace Reflect
{
	namespace
	{
		std::string lowered(std::string_view text)
		{
			std::string result(text);
			std::transform(result.begin(), result.end(), result.begin(),
				[](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
			return result;
		}

		/** The number of letters to insert, drop, change or swap with their neighbour that makes one text the other. */
		size_t distance(const std::string& a, const std::string& b)
		{
			std::vector<size_t> beforeLast(b.size() + 1);
			std::vector<size_t> last(b.size() + 1);
			std::vector<size_t> row(b.size() + 1);
			for (size_t j = 0; j <= b.size(); ++j)
			{
				row[j] = j;
			}
			for (size_t i = 1; i <= a.size(); ++i)
			{
				beforeLast = std::exchange(last, row);
				row[0] = i;
				for (size_t j = 1; j <= b.size(); ++j)
				{
					row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
					if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
					{
						row[j] = std::min(row[j], beforeLast[j - 2] + 1);
					}
				}
			}
			return row[b.size()];
		}
	} // namespace

	std::string nearestName(std::string_view name, const std::vector<std::string>& candidates)
	{
		constexpr size_t shortestPart = 3; // less stands in too many names to tell anything
		const std::string wanted = lowered(name);
		std::string nearest;
		size_t least = std::max<size_t>(1, wanted.size() / 3) + 1;
		for (const std::string& candidate : candidates)
		{
			if (const size_t changes = distance(wanted, lowered(candidate)); changes < least)
			{
				least = changes;
				nearest = candidate;
			}
		}
		for (const std::string& candidate : candidates)
		{
			const bool isPart = wanted.size() >= shortestPart && lowered(candidate).find(wanted) != std::string::npos;
			nearest = nearest.empty() && isPart ? candidate : nearest;
		}
		return nearest;
	}

	std::string suggestion(std::string_view name, const std::vector<std::string>& candidates)
	{
		const std::string nearest = nearestName(name, candidates);
		return nearest.empty() ? nearest : fmt::format(", did you mean '{}'?", nearest);
	}
} // namespace Reflect
