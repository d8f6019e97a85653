#include "Kit/Statistics.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <stdexcept>

double Statistics::quantile(std::vector<double> values, double share)
{
	if (values.empty() || share < 0 || share > 1)
	{
		throw std::invalid_argument("a quantile needs values and a share from 0 to 1");
	}
	std::sort(values.begin(), values.end());
	const double place = share * static_cast<double>(values.size() - 1);
	const auto below = static_cast<std::size_t>(place);
	const std::size_t above = std::min(below + 1, values.size() - 1);
	return std::lerp(values[below], values[above], place - std::floor(place));
}

double Statistics::median(const std::vector<double>& values)
{
	return quantile(values, 0.5);
}

std::vector<double> Statistics::ratios(const std::vector<double>& over, const std::vector<double>& under)
{
	if (over.size() != under.size())
	{
		throw std::invalid_argument("ratios need as many values on both sides");
	}
	std::vector<double> quotients;
	std::transform(over.begin(), over.end(), under.begin(), std::back_inserter(quotients), std::divides<>());
	return quotients;
}
