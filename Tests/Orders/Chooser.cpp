#include "Chooser.h"

#include <algorithm>
#include <sstream>

int RandomChooser::choose(Choice kind, int options)
{
	if (kind == Choice::Hurry)
	{
		const bool hurries = hurriesLeft > 0 && dice.below(64) == 0;
		hurriesLeft -= hurries;
		return hurries;
	}
	if (kind == Choice::Preempt && dice.below(64) >= preemptsOf)
	{
		return 0;
	}
	return static_cast<int>(dice.below(static_cast<std::uint64_t>(options)));
}

int EveryOrder::choose(Choice kind, int options)
{
	if (kind == Choice::Hurry || (kind == Choice::Preempt && preemptions == mostPreemptions))
	{
		return 0;
	}
	if (at == path.size())
	{
		path.push_back({options, 0});
	}
	const int taken = std::min(path[at++].taken, options - 1); // a path of another scenario asks for what is not there
	preemptions += kind == Choice::Preempt && taken > 0;
	return taken;
}

bool EveryOrder::advance()
{
	path.resize(at);
	while (!path.empty() && path.back().taken + 1 >= path.back().options)
	{
		path.pop_back();
	}
	if (path.empty())
	{
		return false;
	}
	++path.back().taken;
	rewind();
	return true;
}

std::string EveryOrder::inWords() const
{
	std::string words = "--path " + std::to_string(mostPreemptions);
	for (std::size_t index = 0; index < at; ++index)
	{
		words += '.' + std::to_string(path[index].taken);
	}
	return words;
}

EveryOrder EveryOrder::of(const std::string& path)
{
	std::istringstream words(path);
	std::string word;
	std::getline(words, word, '.');
	EveryOrder one(std::stoi(word));
	while (std::getline(words, word, '.'))
	{
		one.path.push_back({0, std::stoi(word)});
	}
	return one;
}
