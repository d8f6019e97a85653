#pragma once

#include "CoreMinimal.h"
#include "Dice.h"
#include "UObject/StrongObjectPtr.h"
#include "Wish.h"

#include <fstream>
#include <functional>
#include <string>
#include <vector>

class Run;
struct Errand;

/** @return nothing of a file that is not there. */
inline std::string readFile(const std::string& path)
{
	std::ifstream stream(path, std::ios::binary);
	return std::string(std::istreambuf_iterator<char>(stream), {});
}

/** What happens to a request beside its answer. */
enum class Disturbance
{
	None,
	Cancel,
	CancelAndAgain, // the same again when the outcome is there, without any fault
	Twin, // two requests of one ID at once
	Pause
};

/** What comes of a success. */
enum class Topic
{
	Body, // the expected bytes
	Download, // they are in the file
	Upload, // the server has seen them, and the file is as it was
	Events,
	Info // the size
};

struct Kind
{
	std::string name;
	int weight; // of about 1000
	std::uint64_t mostBytes;
	Topic topic;
	std::vector<Disturbance> disturbances;
	bool isTransfer; // tries again by itself
	std::function<void(Run&, Errand&)> start;
};

/** One request from its start to its last outcome. */
struct Errand
{
	/** The bytes that its server has or has to get. */
	const std::string& content()
	{
		if (bytes.empty())
		{
			bytes = wish.content();
		}
		return bytes;
	}

	/** Whether the file has all of them. */
	bool isInFile() { return readFile(file) == content(); }
	/** Whether that is the answer to a success. */
	bool isRight(const std::string& answer) const
	{
		return topic == Topic::Body     ? answer == expected
			   : topic == Topic::Upload ? answer == "whole"
			   : topic == Topic::Events ? answer == wish.events() && heard == answer
										: topic == Topic::Download && answer.empty();
	}

	const Kind* kind = nullptr;
	Topic topic = Topic::Body;
	Wish wish;
	std::size_t slot = 0; // no other that runs has it: for names that shall be used again
	Dice dice{0};
	Disturbance disturbance = Disturbance::None;
	int due = 1; // outcomes
	bool isAgain = false;
	bool isCancelled = false; // with others of its ID, maybe
	bool isRefused = false; // it has to be
	std::string bytes;
	std::string expected; // of a body
	std::string file; // the target, or what is sent
	std::string heard; // events, one after the other
	TStrongObjectPtr<UObject> held; // a node, as a graph holds it
	std::function<void()> cancel, pause, goOn;
};

/** What a request ended with. */
struct Outcome
{
	bool isSuccess;
	bool isRight; // of a success: it has brought what was wanted
	std::string what; // for people
};

std::vector<Kind> requestKinds();
std::vector<Kind> transferKinds();
