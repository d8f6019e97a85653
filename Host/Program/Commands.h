#pragma once

#include "GameLoop.h"
#include "ScriptState.h"

#include <stdexcept>
#include <string>
#include <vector>

/** The verbs of the command. Each returns the exit status of the process. Thread: main thread. */
namespace Program
{
	enum ExitStatus
	{
		exitGood = 0,
		exitFailed = 1, // a script error, a status of 0 or from 400 on, a success pin that is false
		exitUsage = 2
	};

	/** The caller gave something that cannot be carried out; the text says what. */
	class UsageError : public std::runtime_error
	{
	public:
		using std::runtime_error::runtime_error;
	};

	struct CallOptions
	{
		std::string function; // "Class.function" or the function's name
		std::vector<std::string> pins; // each "name=value"
		bool json = false;
	};

	int runScript(const FGameLoopSettings& settings, const std::string& path, const std::vector<std::string>& arguments);
	/** Throws UsageError for an unknown function or pin, or a value that the pin cannot hold. */
	int callFunction(const FGameLoopSettings& settings, const CallOptions& options);
	int listNodes();
	int runDemo();

	/**
	 * Runs one script file until it and everything it started has ended, and closes it; its error goes to standard error.
	 * @return the script's exit status.
	 */
	int runToEnd(FGameLoop& loop, const std::string& path, const std::vector<std::string>& arguments);
} // namespace Program
