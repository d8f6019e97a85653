#include "Commands.h"
#include "Console.h"
#include "CorvaneDownloadFile.h"
#include "EndSignals.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "JsonValues.h"
#include "PinOutput.h"
#include "ProgressBar.h"
#include "RequestChecks.h"
#include "TargetNames.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <set>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		struct File
		{
			std::string address;
			std::string path; // as people know it
			FCorvaneTransferReport report = {};
		};

		std::string pathFor(const GetOptions& options, const std::string& address)
		{
			return (fs::path(options.folder) / (options.file.empty() ? fileNameOf(address) : options.file)).string();
		}

		/** Throws InputError when they cannot all be got. */
		std::vector<File> filesOf(const GetOptions& options)
		{
			if (options.addresses.size() > 1 && !options.file.empty())
			{
				throw Reflect::InputError("-o names one file, but there are several addresses; -d names a folder for them");
			}
			if (options.addresses.size() > 1 && options.hash.find(':') != std::string::npos)
			{
				throw Reflect::InputError("--hash is that of one file, but there are several addresses");
			}
			std::vector<File> files;
			std::set<std::string> paths;
			for (const std::string& address : options.addresses)
			{
				if (const std::string fault = addressFault(address); !fault.empty())
				{
					throw Reflect::InputError(fault);
				}
				files.push_back({address, pathFor(options, address)});
				if (!paths.insert(files.back().path).second)
				{
					throw Reflect::InputError(fmt::format("two addresses lead to the file '{}'", files.back().path));
				}
			}
			return files;
		}

		ECorvaneIfTargetExists ifTargetExists(const std::string& word)
		{
			ECorvaneIfTargetExists value{};
			const Json written = word;
			try
			{
				Reflect::readValue(PropertyTypeOf<ECorvaneIfTargetExists>(), JsonSource(written), &value);
			}
			catch (const Reflect::InputError& error)
			{
				throw error.inside("--if-exists");
			}
			return value;
		}

		FCorvaneDownloadOptions downloadOptions(const GetOptions& options)
		{
			FCorvaneDownloadOptions download;
			for (const std::string& line : options.headers)
			{
				const auto [name, value] = parseHeader(line);
				download.Headers.Add(name, value);
			}
			download.Hash = Reflect::toFString(options.hash);
			download.BytesPerSecond = static_cast<int64>(options.bytesPerSecond);
			download.IfTargetExists = ifTargetExists(options.ifExists);
			download.bResume = !options.startsOver;
			return download;
		}

		Json toJson(const File& file)
		{
			JsonSink sink;
			Reflect::writeValue(PropertyTypeOf<FCorvaneTransferReport>(), &file.report, sink);
			Json json = {{"FilePath", file.path}};
			json.update(sink.take());
			return json;
		}

		/** Nothing is thrown from here into the event: what cannot be written is told at the end of the program. */
		void writeLine(const std::string& line)
		{
			std::fwrite(line.data(), 1, line.size(), stdout);
			std::fflush(stdout);
		}

		/** Some downloads from their start to the last report. */
		class Get
		{
		public:
			Get(ProgramLoop& gameLoop, const GetOptions& getOptions)
				: loop(gameLoop)
				, options(getOptions)
				, download(downloadOptions(getOptions))
				, files(filesOf(getOptions))
			{
				if (!options.quiet)
				{
					progress.emplace(false);
				}
			}

			/** @return the exit status. */
			int run()
			{
				for (int running = 0; running < options.atOnce; ++running)
				{
					startNext();
				}
				loop.runToIdle({});
				loop.end(); // what a signal has left running is told now
				progress.reset();
				if (EndSignals::asked())
				{
					complain("corvane: the same 'corvane get' goes on");
				}
				return succeeded == files.size() ? exitGood : exitFailed;
			}

		private:
			void startNext()
			{
				if (started == files.size() || EndSignals::asked() || std::ferror(stdout))
				{
					return;
				}
				File& file = files[started++];
				const auto note = [this, &file](const FCorvaneTransferReport& report)
				{
					file.report = report;
					tellProgress();
				};
				const auto end = [this, &file](const FCorvaneTransferReport& report)
				{
					file.report = report;
					finish(file);
				};
				const std::string target = fs::absolute(file.path).lexically_normal().string();
				UCorvaneDownloadFile::Start(Reflect::toFString(file.address), Reflect::toFString(target), download, end, note);
			}

			void finish(const File& file)
			{
				const bool isThere = file.report.Outcome == ECorvaneTransferOutcome::Succeeded;
				succeeded += isThere ? 1 : 0;
				if (!isThere)
				{
					const std::string way = Reflect::toUtf8(file.report.HowToGoOn);
					complain(
						fmt::format("corvane: {}: {}{}{}", file.path, Reflect::toUtf8(file.report.Sentence), way.empty() ? "" : " ", way));
				}
				if (options.json)
				{
					writeLine(asJsonLine(toJson(file)));
				}
				else if (isThere && !options.quiet)
				{
					tellGood(file);
				}
				startNext();
			}

			static void tellGood(const File& file)
			{
				const std::string hash = Reflect::toUtf8(file.report.Hash);
				writeLine(fitFor(stdout,
							  fmt::format("{}: {}{}{}", file.path, Reflect::toUtf8(file.report.Sentence), hash.empty() ? "" : " ", hash)) +
						  "\n");
			}

			/** Of all files together; nobody knows their size before each has told its own. */
			void tellProgress()
			{
				int64 size = 0;
				int64 done = 0;
				for (const File& file : files)
				{
					size = size < 0 || file.report.TotalBytes < 0 ? -1 : size + file.report.TotalBytes;
					done += file.report.TakenOverBytes + file.report.TransferredBytes;
				}
				if (progress)
				{
					progress->tell(ProgressBar::received(size, done));
				}
			}

			ProgramLoop& loop;
			const GetOptions& options;
			const FCorvaneDownloadOptions download;
			std::vector<File> files;
			std::optional<ProgressBar> progress;
			size_t started = 0;
			size_t succeeded = 0;
		};
	} // namespace

	int getFiles(const Settings& settings, const GetOptions& options)
	{
		Settings own = settings;
		own.loop.http.connectionsPerHost = std::max(own.loop.http.connectionsPerHost, options.atOnce);
		ProgramLoop loop(own);
		leaveOutOfLog({"Transfer: "});
		return Get(loop, options).run();
	}
} // namespace Program
