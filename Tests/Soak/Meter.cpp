#include "Meter.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <malloc.h>
#include <numeric>
#include <unistd.h>

namespace
{
	/** What the fit leaves open; a hundred bytes lost with each of a rare kind come to ten times as much in a million. */
	constexpr double mostHeapGrowth = 32 << 10;
	/** The allocator's pages come and go by more than what is in them. */
	constexpr double mostResidentGrowth = 4 << 20;
	/** A shorter run is still filling its pools at its tenth part. */
	constexpr double judgedRequests = 100'000;

	/** Besides workers: the main one, HTTP, the repair, the writer and those for file work of the second module. */
	constexpr int ownThreads = 12;

	using Column = std::vector<double>;

	/** Takes out of a column what is proportional to another. @return the proportion. */
	double takeOut(const Column& other, Column& column)
	{
		const double square = std::inner_product(other.begin(), other.end(), other.begin(), 0.0);
		const double share = square > 0 ? std::inner_product(other.begin(), other.end(), column.begin(), 0.0) / square : 0;
		std::ranges::transform(column, other, column.begin(), [share](double a, double b) { return a - share * b; });
		return share;
	}

	/**
	 * Growth from the first to the last sample, by least squares. Each socket and each thread that is kept for later has its
	 * price: that is taken out, so that their coming and going does not hide what is lost.
	 */
	double fittedGrowth(const std::vector<Sample>& samples, double Sample::*figure)
	{
		std::array<Column, 5> columns; // a constant, sockets, threads, requests, and the figure
		for (const Sample& sample : samples)
		{
			const double values[] = {
				1, static_cast<double>(sample.sockets), static_cast<double>(sample.threads), sample.requests, sample.*figure};
			for (std::size_t index = 0; index < columns.size(); ++index)
			{
				columns[index].push_back(values[index]);
			}
		}
		double perRequest = 0;
		for (std::size_t index = 0; index + 1 < columns.size(); ++index)
		{
			for (std::size_t later = index + 1; later < columns.size(); ++later)
			{
				perRequest = takeOut(columns[index], columns[later]); // at last that of the requests in the figure
			}
		}
		return perRequest * (samples.back().requests - samples.front().requests);
	}
} // namespace

Sample Sample::take(std::uint64_t requests, std::size_t objects)
{
	Sample sample;
	sample.requests = static_cast<double>(requests);
	sample.objects = objects;
	const struct mallinfo2 heap = mallinfo2();
	sample.heap = static_cast<double>(heap.uordblks + heap.hblkhd);
	std::ifstream("/proc/self/statm") >> sample.resident >> sample.resident; // the first number is another one
	sample.resident *= static_cast<double>(sysconf(_SC_PAGESIZE));
	sample.threads = static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
	for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
	{
		std::error_code ignored;
		const bool isSocket = std::filesystem::read_symlink(entry, ignored).string().starts_with("socket:");
		++(isSocket ? sample.sockets : sample.files);
	}
	fmt::print(
		"{:9.0f} requests: {:8.1f} KiB in use, {:8.0f} KiB resident, {:3} sockets, {:2} other descriptors, {:3} threads, {} objects\n",
		sample.requests, sample.heap / 1024, sample.resident / 1024, sample.sockets, sample.files, sample.threads, sample.objects);
	std::fflush(stdout);
	return sample;
}

std::vector<std::string> findGrowth(const std::vector<Sample>& samples, int inFlight, int hosts, double kept)
{
	std::vector<Sample> rest;
	std::copy_if(samples.begin(), samples.end(), std::back_inserter(rest),
		[&](const Sample& sample) { return sample.requests >= samples.back().requests / 10; });
	std::vector<std::string> found;
	const Sample& base = rest.front();
	const auto atMost = [&found](const char* what, double value, double most)
	{
		fmt::print("{}: {:.0f}, at most {:.0f}\n", what, value, most);
		if (value > most)
		{
			found.push_back(fmt::format("{}: {:.0f}, more than {:.0f}", what, value, most));
		}
	};
	const auto largest = [&rest](int Sample::*figure) { return std::ranges::max(rest, {}, figure).*figure; };
	atMost("descriptors without sockets", largest(&Sample::files), base.files);
	atMost("sockets", largest(&Sample::sockets), inFlight * hosts + 1);
	atMost("threads", largest(&Sample::threads), inFlight + ownThreads);
	const bool isSystemAllocator = base.heap > 1 << 20 || base.heap > base.resident / 20; // that of a sanitizer keeps what was freed
	if (base.requests * 10 >= judgedRequests && isSystemAllocator)
	{
		atMost("growth of memory in use, bytes", fittedGrowth(rest, &Sample::heap), mostHeapGrowth + kept);
		atMost("growth of resident memory, bytes", fittedGrowth(rest, &Sample::resident), mostResidentGrowth + kept);
	}
	return found;
}
