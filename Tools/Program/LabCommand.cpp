#include "Commands.h"
#include "Console.h"
#include "EndSignals.h"
#include "InputError.h"
#include "Lab/Cassettes/Cassette.h"
#include "Lab/Cassettes/Recorder.h"
#include "Lab/Origin.h"
#include "Lab/Script/ReadyOrigin.h"
#include "Lab/Script/Script.h"

#include <fmt/core.h>

#include <fstream>
#include <optional>
#include <poll.h>

namespace Program
{
	namespace
	{
		void complainOf(const std::string& fault)
		{
			complain(fmt::format("corvane: lab: {}", fault));
		}

		int waitForEnd()
		{
			constexpr int milliseconds = 1000; // a signal ends the wait, but for one that came just before it
			while (EndSignals::asked() == 0)
			{
				::poll(nullptr, 0, milliseconds);
			}
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
			loop.end();
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
			Lab::Origin origin(
				{.port = options.port, .address = options.address, .usesTls = !options.certificateFile.empty(), .complain = complainOf});
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
			Settings trusting = settings;
			trusting.loop.http.certificateFile = options.certificateFile; // or the game would refuse the origin
			return serve(trusting, options.game, origin.url(""));
		}
	} // namespace

	int runLab(const Settings& settings, const LabOptions& options)
	{
		if (options.recordFile.empty() != options.recordTo.empty())
		{
			throw Reflect::InputError("--record FILE and --to URL belong together");
		}
		if (!options.recordFile.empty() && !options.certificateFile.empty())
		{
			throw Reflect::InputError("--tls does not go with --record: clients speak plain HTTP to a recorder");
		}
		if (!options.script.empty() + !options.recordFile.empty() + !options.replayFile.empty() > 1)
		{
			throw Reflect::InputError("a lab runs a script, or records, or replays");
		}
		return options.recordFile.empty() ? runOrigin(settings, options) : record(settings, options);
	}
} // namespace Program
