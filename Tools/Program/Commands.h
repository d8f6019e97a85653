#pragma once

#include "GameLoop.h"

#include <optional>
#include <string>
#include <vector>

/** The verbs of the command. Each returns the exit status of the process. Thread: main thread. */
namespace Program
{
	enum ExitStatus
	{
		exitGood = 0,
		exitFailed = 1, // a script error, a status of 0 or from 400 on, a success pin that is false, a file that is not there
		exitUsage = 2
	};

	struct Settings
	{
		FGameLoopSettings loop;
		std::string driveBase; // scheme and host for Drive requests; empty = the service's own
		bool verbose = false; // tell on standard error what is sent and answered, but for bodies and secrets
	};

	/** The loop of a verb, with what else the settings ask for. It ends in order when a signal asks for it. */
	class ProgramLoop : public FGameLoop
	{
	public:
		explicit ProgramLoop(const Settings& settings);
		~ProgramLoop() { end(); }

		/** Runs until nothing is pending, or a signal asks for the end, or standard output can be written no further. */
		void runToIdle(const std::function<bool()>& abort);
		/** Shuts down, and tells what a signal leaves unfinished. A second call does nothing. */
		void end();

	private:
		bool hasEnded = false;
	};

	struct CallOptions
	{
		std::string function; // "Class.function" or the function's name
		std::vector<std::string> pins; // each "name=value"
		std::vector<std::string> headers; // each "Name: value"
		bool json = false;
		bool bodyAlone = false; // to standard output
		std::string bodyFile; // the body alone, into this file; empty = not
		bool progress = false; // a line for each progress event, also where there is no terminal
		double timeoutSeconds = 0; // for the whole call; 0 = no limit
	};

	int runScript(const Settings& settings, const std::string& path, const std::vector<std::string>& arguments);
	/** Throws InputError for an unknown function or pin, or a value that the pin cannot hold. */
	int callFunction(const Settings& settings, const CallOptions& options);

	struct GetOptions
	{
		std::vector<std::string> addresses;
		std::string list; // a file with further addresses, "-" = standard input; empty = none
		std::string file; // for a single address; empty = by the address
		std::string folder; // empty = the current one
		std::vector<std::string> headers; // each "Name: value"
		std::string hash; // as the download takes it; empty = none
		std::uint64_t bytesPerSecond = 0; // of all files together; 0 = no limit
		std::string ifExists = "Replace"; // what becomes of a file that is there, as the download calls it
		int atOnce = 4;
		bool startsOver = false; // leaves what an earlier run has kept aside
		bool json = false;
		bool quiet = false; // tells failures only
	};

	/** Downloads files, and tells each one's end. Throws InputError when addresses and options do not fit together. */
	int getFiles(const Settings& settings, const GetOptions& options);

	struct PutOptions
	{
		std::vector<std::string> words; // files, and behind them the address
		std::string formField; // the files go into one form, under this name; empty = not
		std::vector<std::string> fields; // of the form, each "NAME=VALUE"
		std::string verb; // PUT or POST; empty = PUT, and POST for a form
		std::vector<std::string> headers; // each "Name: value"
		std::string hash; // as the upload takes it; empty = none
		bool resumable = false; // to a server of resumable uploads (tus)
		bool mayBeRepeated = false; // a POST may be sent again when the server may have some of it
		bool json = false;
		bool quiet = false; // tells failures only
	};

	/** Uploads files, and tells each one's end and what the server said. Throws InputError when the words do not fit together. */
	int putFiles(const Settings& settings, const PutOptions& options);

	struct FollowOptions
	{
		std::string address;
		std::vector<std::string> headers; // each "Name: value"
		std::optional<std::string> body; // asks with POST; "@path" = the content of a file
		std::string lastId; // goes on behind this event; empty = with the first one
		std::vector<std::string> types; // only events of these; empty = all
		int most = 0; // events to tell; 0 = any number
		bool json = false;
		bool staysAway = false; // ends with the first connection
		bool quiet = false; // tells failures only, besides events
	};

	/** Prints server-sent events as they come, over any number of connections. Throws InputError for what cannot be asked. */
	int followEvents(const Settings& settings, const FollowOptions& options);

	struct NodesOptions
	{
		std::string name; // only this function, node or event; empty = all
		bool json = false;
		std::string htmlDirectory; // write pages there instead of the list; empty = none
	};

	/**
	 * Lists script functions and events with their pins, or writes the pages of the reference.
	 * @return exitFailed when a function lacks a text or an example; the pages are written all the same. Throws InputError
	 * for an unknown name.
	 */
	int listNodes(const NodesOptions& options);
	/** Prints what bash needs to complete command lines. */
	int printCompletion();
	/** Prints what may stand at the end of a command line. @param line  from the command's name to the cursor. */
	int printCandidates(const std::string& line);
	int runDemo(const Settings& settings);

	struct LabOptions
	{
		std::vector<std::string> script; // a script that describes the origin, and its arguments; empty = every behaviour under a path
		int port = 0; // 0 = the system chooses one
		std::string address = "127.0.0.1"; // the interface it listens on
		std::string certificateFile; // speak TLS, and write the certificate there; empty = plain
		std::string game; // a script to run against the origin, which ends with it; empty = until a signal
		std::string recordFile; // write what passes to the server below; empty = not
		std::string recordTo;
		bool keepsSecrets = false;
		std::string replayFile; // answer with what was recorded; empty = not
		double speed = 1; // of a replay
	};

	/** Runs an origin that misbehaves on command, or records or replays one. */
	int runLab(const Settings& settings, const LabOptions& options);

	/**
	 * Runs one script file until it and everything it started has ended, and closes it; its error goes to standard error.
	 * @return the script's exit status.
	 */
	int runToEnd(ProgramLoop& loop, const std::string& path, const std::vector<std::string>& arguments);
} // namespace Program
