#pragma once

#include <cstdint>

/** Numbers without any order that the same start always gives. */
class Dice
{
public:
	explicit Dice(std::uint64_t start)
		: state(start)
	{
	}
	std::uint64_t next()
	{
		std::uint64_t mixed = state += 0x9E3779B97F4A7C15ULL;
		mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
		mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
		return mixed ^ (mixed >> 31);
	}
	/** @return from 0 to below. */
	std::uint64_t below(std::uint64_t number) { return next() % number; }
	bool hasLuck(double share) { return static_cast<double>(below(1'000'000)) < share * 1e6; }

private:
	std::uint64_t state;
};
