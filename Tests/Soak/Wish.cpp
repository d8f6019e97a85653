#include "Wish.h"

#include "Dice.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

std::string Wish::text() const
{
	return std::to_string(number) + '-' + std::to_string(size) + '-' + std::to_string(static_cast<int>(fault)) + (isOnce ? "-1" : "-0");
}

Wish Wish::parse(std::string_view text)
{
	unsigned long long number = 0, size = 0;
	int fault = 0, once = 0;
	std::sscanf(std::string(text).c_str(), "%llu-%llu-%d-%d", &number, &size, &fault, &once);
	return {number, size, static_cast<Fault>(fault), once != 0};
}

std::string Wish::content() const
{
	std::string bytes(size + sizeof(std::uint64_t), '\0');
	Dice dice(number);
	for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t))
	{
		const std::uint64_t next = dice.next();
		std::memcpy(bytes.data() + at, &next, sizeof next);
	}
	bytes.resize(size);
	return bytes;
}

std::string Wish::letters() const
{
	std::string text = content();
	std::ranges::transform(text, text.begin(), [](char each) { return "0123456789abcdefghijklmnopqrstuv"[each & 31]; });
	return text;
}

std::string Wish::events(int after) const
{
	std::string text;
	for (int index = after + 1; index <= numEvents(); ++index)
	{
		text += "id: " + std::to_string(index) + "\ndata: " + event(index) + "\n\n";
	}
	return text;
}
