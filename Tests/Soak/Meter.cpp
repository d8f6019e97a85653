#include "Meter.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace Soak
{
	namespace
	{
		/** Below, growth is not told from a few buffers that happen to be free; a byte lost with each request is a MiB. */
		constexpr double mostHeapGrowth = 128 << 10;
		/** The allocator's pages come and go by more than what is in them. */
		constexpr double mostResidentGrowth = 4 << 20;
		/** A shorter run is still filling its pools at its tenth part. */
		constexpr double judgedRequests = 100'000;

		/** Besides workers: the main one, HTTP, the repair, the writer and those for file work of the second module. */
		constexpr int ownThreads = 12;

		double valueOf(const std::string& name)
		{
			std::ifstream status("/proc/self/status");
			for (std::string word; status >> word;)
			{
				if (double value = 0; word == name && status >> value)
				{
					return value;
				}
			}
			return 0;
		}

		/** Growth from the first to the last sample by the line through all of them. */
		double fittedGrowth(const std::vector<Sample>& samples, double Sample::*figure)
		{
			double meanX = 0, meanY = 0, xx = 0, xy = 0;
			for (const Sample& sample : samples)
			{
				meanX += sample.requests / static_cast<double>(samples.size());
				meanY += sample.*figure / static_cast<double>(samples.size());
			}
			for (const Sample& sample : samples)
			{
				xx += (sample.requests - meanX) * (sample.requests - meanX);
				xy += (sample.requests - meanX) * (sample.*figure - meanY);
			}
			return xx > 0 ? xy / xx * (samples.back().requests - samples.front().requests) : 0;
		}
	} // namespace

	Sample Sample::take(std::uint64_t requests, std::size_t objects)
	{
		Sample sample;
		sample.requests = static_cast<double>(requests);
		sample.objects = objects;
		const struct mallinfo2 heap = mallinfo2();
		sample.heap = static_cast<double>(heap.uordblks + heap.hblkhd);
		sample.resident = valueOf("VmRSS:") * 1024;
		sample.threads = static_cast<int>(valueOf("Threads:"));
		for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
		{
			std::error_code ignored;
			const bool isSocket = std::filesystem::read_symlink(entry, ignored).string().starts_with("socket:");
			++(isSocket ? sample.sockets : sample.files);
		}
		return sample;
	}

	void Meter::add(const Sample& sample)
	{
		samples.push_back(sample);
		fmt::print(
			"{:9.0f} requests: {:8.1f} KiB in use, {:8.0f} KiB resident, {:3} sockets, {:2} other descriptors, {:3} threads, {} objects\n",
			sample.requests, sample.heap / 1024, sample.resident / 1024, sample.sockets, sample.files, sample.threads, sample.objects);
		std::fflush(stdout);
	}

	std::vector<std::string> Meter::findGrowth(int inFlight, int hosts) const
	{
		std::vector<Sample> rest;
		std::copy_if(samples.begin(), samples.end(), std::back_inserter(rest),
			[this](const Sample& sample) { return sample.requests >= samples.back().requests / 10; });
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
			atMost("growth of memory in use, bytes", fittedGrowth(rest, &Sample::heap), mostHeapGrowth);
			atMost("growth of resident memory, bytes", fittedGrowth(rest, &Sample::resident), mostResidentGrowth);
		}
		return found;
	}
} // namespace Soak
