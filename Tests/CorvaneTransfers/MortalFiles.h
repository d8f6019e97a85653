#pragma once

#include "ForwardingFiles.h"

#include <map>
#include <string>

/** How a program may come to its end in the middle of its work. */
enum class Death
{
	Killed, // before a step, or in the middle of it if it is a write
	PowerCut, // what was not flushed is lost
	PowerCutZeros // what was not flushed has its length, and zeros for bytes
};

/** What is wrong with the files of this program, and when it dies. */
struct Fate
{
	Death HowItDies = Death::Killed;
	int DiesAtStep = 0; // 0 = it lives
	bool bMovesReplace = true; // false: a file is not moved onto another, as some systems have it
};

/**
 * Files of a program that dies at a chosen step, counted over all that changes files. Nothing is truly flushed: what a disk would
 * have is kept here instead.
 */
class MortalFiles final : public ForwardingFiles
{
public:
	static constexpr int exitCode = 77;

	explicit MortalFiles(const Fate& InFate)
		: MyFate(InFate)
	{
	}

	int numSteps() const { return Steps; }
	/** Something is about to change: the program may die here, if it is a write, in the middle of it. */
	void step(IFileHandle* Handle = nullptr, const uint8* Bytes = nullptr, int64 Number = 0);
	void flushed(const std::string& Path);

	bool DeleteFile(const TCHAR* Filename) override;
	bool MoveFile(const TCHAR* To, const TCHAR* From) override;
	void SetTimeStamp(const TCHAR* Filename, FDateTime Time) override;
	IFileHandle* OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead) override;

private:
	[[noreturn]] void die();

	const Fate MyFate;
	int Steps = 0;
	std::map<std::string, std::string> OnDisk; // of the files that were opened for writing
};
