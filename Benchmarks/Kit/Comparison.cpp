#include "Kit/Comparison.h"

#include "Kit/Statistics.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace
{
	/** Three or more significant digits, never an exponent. */
	std::string text(double value)
	{
		return fmt::format("{:.{}f}", value, std::abs(value) >= 100 ? 0 : std::abs(value) >= 1 ? 2 : 4);
	}

	void printRow(const std::string& label, const std::vector<double>& values)
	{
		fmt::print("  {:<46}{:>12}{:>12}{:>12}\n", label, text(Statistics::median(values)), text(Statistics::quantile(values, 0)),
			text(Statistics::quantile(values, 1)));
	}

	nlohmann::json summary(const std::vector<double>& values)
	{
		return {{"median", Statistics::median(values)}, {"min", Statistics::quantile(values, 0)}, {"max", Statistics::quantile(values, 1)},
			{"values", values}};
	}
} // namespace

Comparison::Comparison(std::string inTitle, std::string inPeer, Layout inLayout)
	: title(std::move(inTitle))
	, peer(std::move(inPeer))
	, layout(inLayout)
{
}

Comparison::Metric& Comparison::metric(const Figure& figure)
{
	const auto known = std::find_if(metrics.begin(), metrics.end(), [&figure](const Metric& each) { return each.name == figure.name; });
	return known != metrics.end() ? *known : metrics.emplace_back(Metric{figure.name, figure.unit, {}, {}});
}

void Comparison::addPair(const Figures& corvane, const Figures& peerFigures)
{
	for (const Figure& figure : corvane)
	{
		metric(figure).corvane.push_back(figure.value);
	}
	for (const Figure& figure : peerFigures)
	{
		metric(figure).peer.push_back(figure.value);
	}
}

void Comparison::print() const
{
	layout == Layout::Rows ? printRows() : printBlocks();
}

void Comparison::printRows() const
{
	constexpr const char* row = "  {:<40}{:>12}{:>14}{:>12}{:>12}{:>12}\n";
	fmt::print("\n{}\n", title);
	fmt::print(row, "", "Corvane", peer, "quotient", "min", "max");
	for (const Metric& each : metrics)
	{
		const std::vector<double> quotients = Statistics::ratios(each.corvane, each.peer);
		fmt::print(row, fmt::format("{} [{}]", each.name, each.unit), text(Statistics::median(each.corvane)),
			text(Statistics::median(each.peer)), text(Statistics::median(quotients)), text(Statistics::quantile(quotients, 0)),
			text(Statistics::quantile(quotients, 1)));
	}
}

void Comparison::printBlocks() const
{
	fmt::print("\n{}\n  {:<46}{:>12}{:>12}{:>12}\n", title, "", "median", "min", "max");
	for (const Metric& each : metrics)
	{
		const std::string label = fmt::format("{} [{}]", each.name, each.unit);
		printRow(label + ", Corvane", each.corvane);
		if (!each.peer.empty())
		{
			printRow(label + ", " + peer, each.peer);
			const std::vector<double> quotients = Statistics::ratios(each.corvane, each.peer);
			printRow("  Corvane / " + peer, quotients);
			fmt::print("    pair by pair: {:.3g}\n", fmt::join(quotients, " "));
		}
	}
}

nlohmann::json Comparison::toJson() const
{
	nlohmann::json rows = nlohmann::json::array();
	for (const Metric& each : metrics)
	{
		nlohmann::json row = {{"name", each.name}, {"unit", each.unit}, {"corvane", summary(each.corvane)}};
		if (!each.peer.empty())
		{
			row["peer"] = summary(each.peer);
			row["ratio"] = summary(Statistics::ratios(each.corvane, each.peer));
		}
		rows.push_back(std::move(row));
	}
	return {{"title", title}, {"peer", peer}, {"metrics", std::move(rows)}};
}

Comparison alternate(Comparison empty, int pairs, WarmUp warmUp, const Side& corvane, const Side& peer)
{
	Comparison result = std::move(empty);
	if (warmUp == WarmUp::OnePair)
	{
		corvane();
		peer();
	}
	for (int pair = 0; pair < pairs; ++pair)
	{
		const Figures ours = corvane();
		result.addPair(ours, peer());
	}
	return result;
}
