#include "Commands.h"
#include "Console.h"
#include "InputError.h"
#include "Lab/Cassette.h"
#include "Lab/Origin.h"
#include "Lab/ReadyOrigin.h"
#include "Lab/Recorder.h"
#include "Lab/Script.h"

#include <fmt/core.h>

#include <csignal>
#include <fstream>
#include <optional>

namespace Program
{
	namespace
	{
		void complainOf(const std::string& fault)
		{
			complain(fmt::format("corvane: lab: {}", fault));
		}

		/** Its own threads shall not take these: whoever waits for them does. */
		sigset_t blockEndSignals()
		{
			sigset_t signals;
			sigemptyset(&signals);
			sigaddset(&signals, SIGINT);
			sigaddset(&signals, SIGTERM);
			pthread_sigmask(SIG_BLOCK, &signals, nullptr);
			return signals;
		}

		int waitForEnd()
		{
			const sigset_t signals = blockEndSignals();
			int signal = 0;
			sigwait(&signals, &signal);
			return exitGood;
		}

		/** Tells where it listens, and stays until it is told to end. */
		int serve(const Settings& settings, const std::string& game, const std::string& url)
		{
			if (game.empty())
			{
				fmt::print("{}\n", url);
				std::fflush(stdout);
				return waitForEnd();
			}
			ProgramLoop loop(settings);
			const int status = runToEnd(loop, game, {url});
			loop.Shutdown();
			return status;
		}

		int record(const Settings& settings, const LabOptions& options)
		{
			const Lab::Recorder recorder(
				{options.recordTo, options.recordFile, options.port, options.address, options.keepsSecrets, complainOf});
			return serve(settings, options.game, recorder.url(""));
		}

		void writeCertificate(const Lab::Origin& origin, const std::string& path)
		{
			if (!(std::ofstream(path, std::ios::binary) << origin.certificate() << std::flush))
			{
				throw std::runtime_error("cannot write " + path);
			}
		}

		int runOrigin(const Settings& settings, const LabOptions& options)
		{
			Lab::Origin origin({options.port, options.address, !options.certificateFile.empty(), complainOf});
			std::optional<Lab::Script> script;
			if (!options.certificateFile.empty())
			{
				writeCertificate(origin, options.certificateFile);
			}
			if (!options.script.empty())
			{
				script.emplace(origin).runFile(options.script.front(), {options.script.begin() + 1, options.script.end()});
			}
			else if (!options.replayFile.empty())
			{
				origin.at("*", Lab::replay(Lab::loadCassette(options.replayFile), options.speed));
			}
			else
			{
				Lab::makeReady(origin);
			}
			return serve(settings, options.game, origin.url(""));
		}
	} // namespace

	int runLab(const Settings& settings, const LabOptions& options)
	{
		if (options.recordFile.empty() != options.recordTo.empty())
		{
			throw Reflect::InputError("--record FILE and --to URL belong together");
		}
		if (!options.script.empty() + !options.recordFile.empty() + !options.replayFile.empty() > 1)
		{
			throw Reflect::InputError("a lab runs a script, or records, or replays");
		}
		if (options.game.empty())
		{
			blockEndSignals(); // before there are threads
		}
		return options.recordFile.empty() ? runOrigin(settings, options) : record(settings, options);
	}
} // namespace Program
