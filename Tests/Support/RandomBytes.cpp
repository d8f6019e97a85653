#include "RandomBytes.h"

#include <algorithm>
#include <random>

std::string randomBytes(std::size_t number)
{
	std::mt19937 random(static_cast<unsigned>(number));
	std::string bytes(number, '\0');
	std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
	return bytes;
}
