#pragma once

#include <chrono>
#include <string>

namespace Program
{
	/** @return "12.3 MiB", or a smaller unit where that would tell nothing. */
	std::string sizeInWords(double bytes);

	/** How fast bytes have come since the first look at them. Thread: one at a time. */
	class TransferRate
	{
	public:
		/** @param bytes  so far; fewer than before begin it anew. */
		void note(double bytes);

		/** @param left  bytes; negative = nobody knows. @return ", 2.3 MiB/s, 12 s left"; empty while there is nothing to tell. */
		std::string inWords(double left) const;

	private:
		using Clock = std::chrono::steady_clock;

		bool hasBegun = false;
		Clock::time_point begin;
		double firstBytes = 0;
		double lastBytes = 0;
		Clock::time_point last;
	};
} // namespace Program
