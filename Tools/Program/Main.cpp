#include "CommandLineFaults.h"
#include "Commands.h"
#include "Console.h"
#include "EndSignals.h"
#include "InputError.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <charconv>

namespace
{
	/** The parser knows nothing of words that it leaves to the script, nor of the last one of several. */
	class OwnUsage : public CLI::Formatter
	{
	public:
		explicit OwnUsage(std::string inWords)
			: words(std::move(inWords))
		{
		}
		std::string make_usage(const CLI::App*, std::string name) const override { return "Usage: " + name + " [OPTIONS] " + words + "\n"; }

	private:
		const std::string words;
	};

	/** The parser takes a number below 0 for a very large one. */
	std::string rateFault(const std::string& bytes)
	{
		std::int64_t rate = 0;
		const bool isNumber = std::from_chars(bytes.data(), bytes.data() + bytes.size(), rate).ec == std::errc();
		return isNumber && rate >= 0 ? "" : "no rate is below 0, or that large";
	}

	struct CommandLine
	{
		Program::Settings settings;
		Program::CallOptions call;
		Program::GetOptions get;
		Program::PutOptions put;
		Program::FollowOptions followOptions;
		Program::NodesOptions nodesOptions;
		Program::LabOptions labOptions;
		std::string completedLine;
		std::string helpTopic;

		CLI::App app{"HTTP requests, downloads and file functions for scripts"};
		CLI::App* run = app.add_subcommand("run", "Runs a Lua script, which finds its arguments in arg");
		CLI::App* callFunction = app.add_subcommand("call", "Calls one function or node and prints its pins");
		CLI::App* getFiles =
			app.add_subcommand("get", "Downloads files, each whole and checked or with a reason; what is there already is gone on with");
		CLI::App* putFiles = app.add_subcommand("put", "Uploads files as they are or in a form; none is changed, copied or loaded");
		CLI::App* follow =
			app.add_subcommand("follow", "Prints server-sent events as they come, and connects again when the stream breaks off");
		CLI::App* nodes = app.add_subcommand("nodes", "Lists script functions and events with their pins, or writes pages about them");
		CLI::App* demo = app.add_subcommand("demo", "Runs the examples against a server of its own");
		CLI::App* lab = app.add_subcommand("lab", "Runs an origin that misbehaves on command, or records or replays one");
		CLI::App* completion = app.add_subcommand("completion", "Prints completion for bash: source <(corvane completion)");
		CLI::App* help = app.add_subcommand("help", "Prints what the command or one of its verbs takes");

		CommandLine()
		{
			app.name("corvane");
			app.require_subcommand(1);
			app.set_version_flag("--version", "corvane " CORVANE_VERSION);
			help->add_option("VERB", helpTopic, "The verb that it is about");
			run->formatter(std::make_shared<OwnUsage>("SCRIPT [ARG...]"));
			addDirectories(*run);
			addVerbose(*run);
			run->add_option("--connections", settings.loop.http.connectionsPerHost, "How many at once to one host, 6 by default")
				->check(CLI::Range(1, 4096));
			run->prefix_command(); // everything from SCRIPT on belongs to the script, options too
			addDirectories(*callFunction);
			nodes->add_flag("--json", nodesOptions.json, "Print a JSON list");
			nodes->add_option("--html", nodesOptions.htmlDirectory, "Write a page for each function into this folder");
			nodes->add_option("NAME", nodesOptions.name, "Only this function, node or event");
			completion->add_option("--line", completedLine, "Print what may stand at the end of this command line instead");
			addDriveBase(*demo);
			addLab();
			addGetOptions();
			addPutOptions();
			addFollowOptions();
			callFunction->add_flag("--json", call.json, "Print one JSON object, and one for each server-sent event");
			callFunction->add_flag("--body", call.bodyAlone, "Write the body alone, byte for byte unless to a terminal");
			callFunction->add_option("-o,--output", call.bodyFile, "Write the body alone into this file");
			callFunction->add_flag("--progress", call.progress, "Print a line for each progress event on standard error");
			callFunction->add_option("-H,--header", call.headers, "A header of the request: -H 'Accept: text/plain'")
				->allow_extra_args(false);
			callFunction->add_option("--timeout", call.timeoutSeconds, "Give up after so many seconds")->check(CLI::PositiveNumber);
			addVerbose(*callFunction);
			callFunction->add_option("FUNCTION", call.function, "Class.function, or the function's name alone")->required();
			callFunction->add_option("PIN=VALUE", call.pins,
				"Enumerations by name, lists and maps as JSON: header='{\"Accept\":\"text/plain\"}'; a body may be @FILE");
		}

		void addLab()
		{
			addDirectories(*lab);
			lab->add_option(
				"SCRIPT", labOptions.script, "Lua that says what the origin does, and its arguments; else every behaviour has a path");
			lab->add_option("--port", labOptions.port, "Listen on this port")->check(CLI::Range(0, 65535));
			lab->add_option("--listen-on", labOptions.address, "Be open to others: an address of this machine, 0.0.0.0 for all")
				->check(CLI::ValidIPV4);
			lab->add_option("--tls", labOptions.certificateFile, "Speak TLS, and write the certificate into this file");
			lab->add_option("--run", labOptions.game, "Run this Lua script against it, with its URL as the argument, and end with it")
				->check(CLI::ExistingFile);
			lab->add_option("--record", labOptions.recordFile, "Write what passes between a client and the server of --to into this file");
			lab->add_option("--to", labOptions.recordTo, "The server's URL");
			lab->add_flag("--keep-secrets", labOptions.keepsSecrets, "Record authorization, cookies and the like, too");
			lab->add_option("--replay", labOptions.replayFile, "Answer as recorded in this file")->check(CLI::ExistingFile);
			lab->add_option("--speed", labOptions.speed, "Of a replay: 2 = pauses are half as long, 0 = none")
				->check(CLI::NonNegativeNumber);
		}

		void addGetOptions()
		{
			getFiles->add_option("URL", get.addresses, "What to download");
			getFiles->add_option(
				"-i,--input", get.list, "A list: a URL a line, maybe with a file name behind it; # begins a comment, - is standard input");
			getFiles->add_option("-o,--output", get.file, "The file to write; by the last part of the URL when it is not given");
			getFiles->add_option("-d,--dir", get.folder, "The folder to put files into, made when it is missing");
			getFiles->add_option("-H,--header", get.headers, "A header of the requests: -H 'Accept: text/plain'")->allow_extra_args(false);
			getFiles->add_option("--hash", get.hash, "What the file must have: sha256:HEX, or sha1, md5; sha256 alone tells it");
			getFiles->add_option("--limit-rate", get.bytesPerSecond, "Bytes per second of all files together: 500k, 2M")
				->transform(CLI::AsSizeValue(false))
				->check(rateFault);
			getFiles->add_option(
				"--if-exists", get.ifExists, "What becomes of a file that is there: Replace (the default), Keep, Fail, OnlyIfNewer");
			getFiles->add_option("-j,--jobs", get.atOnce, "How many files at once, 4 by default")->check(CLI::Range(1, 64));
			getFiles->add_flag("--no-resume", get.startsOver, "Begin at the first byte, whatever an earlier run has kept");
			getFiles->add_flag("--json", get.json, "Print the report of each file as a line of JSON");
			getFiles->add_flag("-q,--quiet", get.quiet, "Tell failures only");
			addVerbose(*getFiles);
			getFiles->footer("Exit status: 0 all files are there, 1 some are not, 2 the command line is wrong\n"
							 "Ctrl-C keeps what has arrived, and the same command goes on");
		}

		void addPutOptions()
		{
			putFiles->formatter(std::make_shared<OwnUsage>("FILE... URL"));
			putFiles->add_option("URL", put.words, "Files, and behind them where they go: a URL that ends in / gets the name of each file")
				->required();
			putFiles->add_option("--form", put.formField, "Send all files in one form, as this field of it");
			putFiles->add_option("--field", put.fields, "A further field of the form: --field NAME=VALUE")->allow_extra_args(false);
			putFiles->add_flag("--tus", put.resumable, "Send in pieces, to a server of resumable uploads; the same command goes on");
			putFiles->add_option("-X,--request", put.verb, "PUT (the default), or POST (that of a form)");
			putFiles->add_option("-H,--header", put.headers, "A header of the requests: -H 'Accept: text/plain'")->allow_extra_args(false);
			putFiles->add_option("--hash", put.hash, "Tell a hash of what is sent: sha256, sha1 or md5; sha256:HEX sends nothing else");
			putFiles->add_flag("--may-repeat", put.mayBeRepeated, "Send a POST again after trouble, even if the server may have it");
			putFiles->add_flag("--json", put.json, "Print the report of each upload as a line of JSON");
			putFiles->add_flag("-q,--quiet", put.quiet, "Tell failures only");
			addVerbose(*putFiles);
			putFiles->footer("Exit status: 0 all is uploaded, 1 some is not, 2 the command line is wrong\n"
							 "Notes of --tus stand in ~/.local/state/corvane/uploads ($XDG_STATE_HOME counts) until an upload is through");
		}

		void addFollowOptions()
		{
			follow->add_option("URL", followOptions.address, "The stream of events (text/event-stream)")->required();
			follow->add_option("-H,--header", followOptions.headers, "A header of the requests: -H 'Authorization: Bearer ...'")
				->allow_extra_args(false);
			follow->add_option("-d,--data", followOptions.body,
				"Ask with POST and this body, JSON unless a Content-Type says otherwise; @FILE sends a file");
			follow->add_option("--last-id", followOptions.lastId, "Go on behind the event of this ID");
			follow->add_option("--event", followOptions.types, "Print events of this type only; may be given again")
				->allow_extra_args(false);
			follow->add_flag("--json", followOptions.json, "Print each event as a line of JSON, with its ID and type");
			follow->add_flag("--no-reconnect", followOptions.staysAway, "End with the first connection");
			follow->add_option("--max", followOptions.most, "End after so many events")->check(CLI::PositiveNumber);
			follow->add_flag("-q,--quiet", followOptions.quiet, "Tell nothing but events and failures");
			addVerbose(*follow);
			follow->footer(
				"Exit status: 0 as many events as --max wants, or the stream ended in order, 1 the stream could not be followed,\n"
				"2 the command line is wrong, 130 Ctrl-C ended it, which tells how to go on");
		}

		void addDriveBase(CLI::App& verb)
		{
			verb.add_option("--drive-base", settings.driveBase, "Scheme and host that stand for those of Drive");
		}

		void addVerbose(CLI::App& verb)
		{
			verb.add_flag(
				"-v,--verbose", settings.verbose, "Tell lines and headers of requests and answers on standard error, without secrets");
		}

		void addDirectories(CLI::App& verb)
		{
			addDriveBase(verb);
			verb.add_option("--project", settings.loop.projectDirectory, "The project's directory")->check(CLI::ExistingDirectory);
			verb.add_option("--base", settings.loop.baseDirectory, "Where relative paths start")->check(CLI::ExistingDirectory);
		}
	};

	int runScript(const CommandLine& line)
	{
		std::vector<std::string> arguments = line.run->remaining();
		if (arguments.empty() || arguments.front().starts_with('-'))
		{
			throw Reflect::InputError(arguments.empty() ? "run needs a script" : "unknown option " + arguments.front());
		}
		const std::string script = arguments.front();
		arguments.erase(arguments.begin());
		return Program::runScript(line.settings, script, arguments);
	}

	int printHelp(const CommandLine& line)
	{
		if (!line.helpTopic.empty())
		{
			Program::checkVerb(line.app, line.helpTopic);
		}
		const CommandLine fresh; // this one would speak of the verb "help" only
		const CLI::App& app = line.helpTopic.empty() ? fresh.app : *fresh.app.get_subcommand(line.helpTopic);
		fmt::print("{}", app.help(line.helpTopic.empty() ? "" : "corvane"));
		return Program::exitGood;
	}

	int carryOut(const CommandLine& line)
	{
		if (*line.help)
		{
			return printHelp(line);
		}
		if (*line.run)
		{
			return runScript(line);
		}
		if (*line.callFunction)
		{
			return Program::callFunction(line.settings, line.call);
		}
		if (*line.getFiles)
		{
			return Program::getFiles(line.settings, line.get);
		}
		if (*line.putFiles)
		{
			return Program::putFiles(line.settings, line.put);
		}
		if (*line.follow)
		{
			return Program::followEvents(line.settings, line.followOptions);
		}
		if (*line.completion)
		{
			return line.completedLine.empty() ? Program::printCompletion() : Program::printCandidates(line.completedLine);
		}
		if (*line.lab)
		{
			return Program::runLab(line.settings, line.labOptions);
		}
		return *line.nodes ? Program::listNodes(line.nodesOptions) : Program::runDemo(line.settings);
	}

	/** @return the exit status that says so. */
	int fail(const std::exception& error, int status)
	{
		const bool isOfOutput = status == Program::exitFailed && std::ferror(stdout); // this is told when the output ends
		if (!isOfOutput && !Program::EndSignals::asked())
		{
			Program::complain(fmt::format("corvane: {}", error.what()));
		}
		return status;
	}

	int runCommand(int argc, char** argv)
	{
		CommandLine line;
		try
		{
			Program::checkVerb(line.app, argc > 1 ? argv[1] : "");
			line.app.parse(argc, argv);
			return carryOut(line);
		}
		catch (const CLI::ParseError& error)
		{
			const bool isAnswer = error.get_exit_code() == 0; // to whoever asked for help
			return isAnswer ? line.app.exit(error) : fail(Reflect::InputError(Program::explain(line.app, error)), Program::exitUsage);
		}
		catch (const Reflect::InputError& error)
		{
			return fail(error, Program::exitUsage);
		}
		catch (const std::exception& error)
		{
			return fail(error, Program::exitFailed);
		}
	}
} // namespace

int main(int argc, char** argv)
{
	Program::openConsole();
	const Program::EndSignals signals;
	const int status = runCommand(argc, argv);
	if (const int signal = Program::EndSignals::asked())
	{
		std::fflush(stdout);
		Program::EndSignals::endAs(signal);
	}
	const bool isWritten = Program::finishOutput();
	return isWritten || status != Program::exitGood ? status : Program::exitFailed;
}
