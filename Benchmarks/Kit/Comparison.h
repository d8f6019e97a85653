#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

/** One measured number of one run. */
struct Figure
{
	std::string name;
	std::string unit;
	double value;
};

using Figures = std::vector<Figure>;

/** The runs of Corvane and of a peer that did the same work, pair by pair. */
class Comparison
{
public:
	/** What is printed of a figure. */
	enum class Layout
	{
		Blocks, // median, smallest and largest value of both sides and of their quotients, and each quotient
		Rows // one row: both medians and the quotients; for many comparisons, whose peers have all figures
	};

	/**
	 * @param inTitle  names the workload and its settings.
	 * @param inPeer  what Corvane is compared with.
	 */
	Comparison(std::string inTitle, std::string inPeer, Layout inLayout = Layout::Blocks);

	/**
	 * Adds the figures of one pair of runs. The peer may lack some of Corvane's figures; otherwise every pair has the same
	 * ones.
	 */
	void addPair(const Figures& corvane, const Figures& peer);

	/** Prints a table to standard output. */
	void print() const;
	/** The same with every single value. */
	nlohmann::json toJson() const;

private:
	struct Metric
	{
		std::string name;
		std::string unit;
		std::vector<double> corvane; // one for each pair
		std::vector<double> peer; // parallel to corvane, or empty
	};

	Metric& metric(const Figure& figure);
	void printBlocks() const;
	void printRows() const;

	std::string title;
	std::string peer;
	Layout layout;
	std::vector<Metric> metrics;
};

/** One side of a comparison: does the whole work once and says what it took. */
using Side = std::function<Figures()>;

/** Whether the first pair counts. */
enum class WarmUp
{
	OnePair,
	None
};

/** Runs Corvane and peer in turns, so that whatever slows the machine down for a while meets both. */
Comparison alternate(Comparison empty, int pairs, WarmUp warmUp, const Side& corvane, const Side& peer);
