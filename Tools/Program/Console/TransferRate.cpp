#include "TransferRate.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr double shortestMeasurement = 0.25; // seconds; what is in buffers at the start says nothing about the line

		/** @return "12 s" or "3 min 20 s". */
		std::string timeInWords(double seconds)
		{
			const auto whole = static_cast<long>(std::min(seconds, 359999.0));
			return whole < 60 ? fmt::format("{} s", whole) : fmt::format("{} min {} s", whole / 60, whole % 60);
		}
	} // namespace

	std::string sizeInWords(double bytes)
	{
		constexpr double mebibyte = 1 << 20;
		constexpr double kibibyte = 1 << 10;
		return bytes >= mebibyte   ? fmt::format("{:.1f} MiB", bytes / mebibyte)
			   : bytes >= kibibyte ? fmt::format("{:.1f} KiB", bytes / kibibyte)
								   : fmt::format("{:.0f} bytes", bytes);
	}

	void TransferRate::note(double bytes)
	{
		last = Clock::now();
		lastBytes = bytes;
		if (!hasBegun || bytes < firstBytes)
		{
			hasBegun = true;
			begin = last;
			firstBytes = bytes;
		}
	}

	std::string TransferRate::inWords(double left) const
	{
		const double seconds = std::chrono::duration<double>(last - begin).count();
		const double speed = seconds >= shortestMeasurement ? (lastBytes - firstBytes) / seconds : 0;
		if (speed <= 0)
		{
			return "";
		}
		return fmt::format(", {}/s", sizeInWords(speed)) + (left >= 0 ? fmt::format(", {} left", timeInWords(left / speed)) : "");
	}
} // namespace Program
