#pragma once

#include <vector>

namespace Statistics
{
	/**
	 * The value below which a share of the sample lies, read between neighbours in proportion.
	 * @param values  in any order, at least one.
	 * @param share  0 = the smallest, 0.5 = the median, 1 = the largest.
	 */
	double quantile(std::vector<double> values, double share);

	double median(const std::vector<double>& values);

	/** One quotient for each pair. @param over, under  parallel, of the same length. */
	std::vector<double> ratios(const std::vector<double>& over, const std::vector<double>& under);
} // namespace Statistics
