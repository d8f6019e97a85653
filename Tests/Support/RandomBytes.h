#pragma once

#include <algorithm>
#include <random>
#include <string>

/** Bytes without any order; the same ones whenever so many are asked for with that seed. */
inline std::string randomBytes(std::size_t number, unsigned seed = 0)
{
	std::mt19937 random(static_cast<unsigned>(number) + seed);
	std::string bytes(number, '\0');
	std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
	return bytes;
}
