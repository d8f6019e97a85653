#pragma once

#include "Download/DownloadMachine.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

/** Chances and choices of one simulated download, the same ones for the same seed. */
class Dice
{
public:
	explicit Dice(unsigned seed)
		: Random(seed)
	{
	}
	/** @return from 0 to most. */
	int64 upTo(int64 most) { return std::uniform_int_distribution<int64>(0, most)(Random); }
	bool chance(double share) { return share > 0 && fraction() < share; }
	double fraction() { return std::uniform_real_distribution<double>(0, 1)(Random); }
	std::string bytes(int64 number);

private:
	std::mt19937 Random;
};

/** A server of one file, as a function: what it has and how it misbehaves, and what it answers to the headers of a request. */
struct ModelServer
{
	enum class Validator
	{
		strong,
		weak,
		date,
		freshDate, // told within the minute in which the file changed
		none
	};
	enum class Size // of a new version
	{
		same,
		shorter,
		longer
	};

	Validator validator = Validator::strong;
	std::vector<std::string> versions; // of the file; the last one is served
	// How often, 0 to 1:
	double drops = 0, changes = 0, busy = 0, ignoresRanges = 0, ignoresIfRange = 0, shifts = 0, partsOnly = 0, hidesTotal = 0,
		   hidesLength = 0, noConnection = 0, tooLong = 0, errorPage = 0, packs = 0;

	struct Answer
	{
		FCorvaneExchangeResult result; // as if all had arrived
		std::string body;
	};

	void change(Dice& dice, Size size);
	Answer answer(const TMap<FString, FString>& headers, Dice& dice);
	bool has(const std::string& bytes) const;

private:
	Answer page(int code, const std::string& body, const std::vector<std::pair<std::string, std::string>>& lines) const;
	Answer part(int64 first, int64 last, Dice& dice) const;
	Answer whole(Dice& dice) const;
	std::vector<std::pair<std::string, std::string>> validators() const;
	bool isOurs(const std::string& ifRange) const;
};

/** What is on the disk of the model: bytes, and what a journal would tell of them. */
struct ModelDisk
{
	std::string part;
	FCorvaneVersion version;
	int64 total = -1;
	std::string target;
	bool hasTarget = false;
};

/** Drives a machine as the real driver does, with a model of everything around it: time passes as it is told to. */
class ModelRun
{
public:
	ModelRun(ModelServer& server, ModelDisk& disk, Dice& dice, const FCorvaneDownloadOptions& options);

	/** How often, 0 to 1, a wait or an exchange is interrupted by a pause, a cancel or the end of the program. */
	double pauses = 0, cancels = 0, ends = 0, diskFull = 0;
	/** How often the disk loses bytes when it shall secure them. */
	double losses = 0;

	/** Runs until the report; false when it does not come. */
	bool run();
	const FCorvaneTransferReport& report() const { return Machine.GetReport(); }

	int told = 0;
	int compared = 0; // tails that were compared and found the same
	int appended = 0; // answers that went behind what was there
	int lost = 0; // times that the disk had lost bytes before a try
	double longestWait = 0;
	std::vector<FCorvaneDownloadQuestion> questions;

private:
	FCorvaneDownloadStep follow(const FCorvaneDownloadStep& step);
	FCorvaneDownloadStep open(const FCorvaneDownloadStep& step);
	FCorvaneDownloadStep exchange(const FCorvaneDownloadQuestion& question);
	void take(const FCorvaneDownloadQuestion& question, const std::string& body, FCorvaneAttemptEnd& end);
	FCorvaneDownloadStep interrupt();
	FCorvaneDownloadStep wait(double seconds);
	void replaceTarget();
	void secure();

	ModelServer& Server;
	ModelDisk& Disk;
	Dice& Chances;
	const FCorvaneDownloadOptions Options;
	FCorvaneDownloadMachine Machine;
	double Now = 1000;
};
