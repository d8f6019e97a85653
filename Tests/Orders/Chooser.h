#pragma once

#include "Dice.h"

#include <cstdint>
#include <string>
#include <vector>

/** What one decision is about. */
enum class Choice
{
	/** Whose turn it is, while whoever has it could go on: 0 = goes on. */
	Preempt,
	/** Whose turn it is, while whoever had it waits; or what the world does. */
	Free,
	/** Whether time passes although somebody could go on: 0 = no. */
	Hurry
};

/** Decides at every point of a run. Runs of equal decisions are equal. */
class Chooser
{
public:
	virtual ~Chooser() = default;
	/** @param options  at least 2. @return one of them, counted from 0. */
	virtual int choose(Choice kind, int options) = 0;
	/** What runs this order again, as an option of the program. */
	virtual std::string inWords() const = 0;
};

/** Decides at random: the same for the same seed. */
class RandomChooser final : public Chooser
{
public:
	explicit RandomChooser(std::uint64_t inSeed)
		: seed(inSeed)
		, dice(inSeed)
	{
	}
	int choose(Choice kind, int options) override;
	std::string inWords() const override { return "--seed " + std::to_string(seed); }

private:
	const std::uint64_t seed;
	Dice dice;
	const std::uint64_t preemptsOf = std::uint64_t{1} << dice.below(6); // of 64 chances
	int hurriesLeft = 4; // a clock that runs ahead for ever leaves nobody a chance
};

/** Goes through all orders in which no more than a number of turns are taken away, and time passes only when all wait. */
class EveryOrder final : public Chooser
{
public:
	explicit EveryOrder(int inMostPreemptions)
		: mostPreemptions(inMostPreemptions)
	{
	}
	int choose(Choice kind, int options) override;
	std::string inWords() const override;

	/** Makes the next run another one. @return false when there is none left. */
	bool advance();
	/** The same run again. */
	void rewind()
	{
		at = 0;
		preemptions = 0;
	}

	/** The decisions of inWords, for one run. */
	static EveryOrder of(const std::string& path);

private:
	struct Decision
	{
		int options;
		int taken;
	};

	const int mostPreemptions;
	std::vector<Decision> path;
	std::size_t at = 0;
	int preemptions = 0; // of this run
};
