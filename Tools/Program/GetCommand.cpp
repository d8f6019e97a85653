#include "AddressFault.h"
#include "AddressList.h"
#include "Commands.h"
#include "Console.h"
#include "Containers/Ticker.h"
#include "CorvaneDownloadFile.h"
#include "CorvaneTransferQueue.h"
#include "EndSignals.h"
#include "FileContent.h"
#include "FilePaths.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "JsonValues.h"
#include "PinOutput.h"
#include "ProgressBar.h"
#include "ProgressTable.h"
#include "TargetNames.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <set>
#include <utility>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		const TCHAR* const queueName = TEXT("get");
		constexpr float secondsBetweenDrawings = 0.1f;

		struct File
		{
			std::string address;
			std::string path; // as people know it
			std::string target; // the same in full
			FCorvaneTransferReport report = {};
			ProgressTable::Row* row = nullptr; // while its bytes move and several files are told of
		};

		/** What shall be got, from the command line and the list. */
		std::vector<ListedAddress> wantedBy(const GetOptions& options)
		{
			std::vector<ListedAddress> wanted;
			for (const std::string& address : options.addresses)
			{
				if (const std::string fault = addressFault(address); !fault.empty())
				{
					throw Reflect::InputError(fault);
				}
				wanted.push_back({address, options.file});
			}
			if (!options.list.empty())
			{
				const std::vector<ListedAddress> listed = readAddressList(contentOf(options.list), options.list);
				wanted.insert(wanted.end(), listed.begin(), listed.end());
			}
			return wanted;
		}

		/** Throws InputError when options that are about one file stand beside several. */
		void checkSeveral(const GetOptions& options)
		{
			if (options.addresses.empty() && options.list.empty())
			{
				throw Reflect::InputError("URL is required, or -i and a list of them; 'corvane help get' tells more");
			}
			const bool areSeveral = options.addresses.size() > 1 || !options.list.empty();
			if (areSeveral && !options.file.empty())
			{
				throw Reflect::InputError("-o names one file, but there are several addresses; -d names a folder for them");
			}
			if (areSeveral && options.hash.find(':') != std::string::npos)
			{
				throw Reflect::InputError("--hash is that of one file, but there are several addresses");
			}
		}

		/** Throws InputError when they cannot all be got. */
		std::vector<File> filesOf(const GetOptions& options)
		{
			checkSeveral(options);
			std::vector<File> files;
			std::set<std::string> targets;
			for (const ListedAddress& wanted : wantedBy(options))
			{
				const std::string name = wanted.file.empty() ? fileNameOf(wanted.address) : wanted.file;
				const std::string path = (fs::path(options.folder) / name).string();
				files.push_back({wanted.address, path, targetPath(path)});
				if (!targets.insert(files.back().target).second)
				{
					throw Reflect::InputError(fmt::format("two addresses lead to the file '{}'", path));
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
			download.Queue = queueName;
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
				if (!options.quiet && files.size() == 1)
				{
					bar.emplace(false);
				}
				else if (!options.quiet)
				{
					table.emplace();
					drawing = FTSTicker::GetCoreTicker().AddTicker(
						FTickerDelegate::CreateLambda([this](float) { return draw(); }), secondsBetweenDrawings);
				}
			}
			~Get() { FTSTicker::RemoveTicker(drawing); }
			Get(const Get&) = delete;
			Get& operator=(const Get&) = delete;

			/** @return the exit status. */
			int run()
			{
				queue->SetLimits(options.atOnce, options.atOnce, static_cast<int64>(options.bytesPerSecond));
				for (File& file : files)
				{
					start(file);
				}
				loop.runToIdle({});
				loop.end(); // what a signal has left running or waiting is told now
				bar.reset();
				table.reset();
				if (EndSignals::asked())
				{
					tellHowToGoOn();
				}
				return succeeded == files.size() ? exitGood : exitFailed;
			}

		private:
			void start(File& file)
			{
				const auto note = [this, &file](const FCorvaneTransferReport& report)
				{
					file.report = report;
					tellProgress(file);
				};
				const auto end = [this, &file](const FCorvaneTransferReport& report)
				{
					file.report = report;
					finish(file);
				};
				UCorvaneDownloadFile::Start(Reflect::toFString(file.address), Reflect::toFString(file.target), download, end, note);
			}

			void finish(File& file)
			{
				const bool isThere = file.report.Outcome == ECorvaneTransferOutcome::Succeeded;
				const bool hasBegun = file.report.Outcome != ECorvaneTransferOutcome::Ended || file.report.Attempts > 0;
				succeeded += isThere ? 1 : 0;
				++ended;
				notBegun += hasBegun ? 0 : 1;
				if (table && file.row)
				{
					table->drop(*std::exchange(file.row, nullptr));
				}
				if (!isThere && hasBegun)
				{
					tellFailure(file);
				}
				if (options.json)
				{
					printLine(asJsonText(toJson(file)));
				}
				else if (isThere && !options.quiet)
				{
					const std::string hash = Reflect::toUtf8(file.report.Hash);
					printLine(fmt::format("{}: {}{}{}", file.path, Reflect::toUtf8(file.report.Sentence), hash.empty() ? "" : " ", hash));
				}
			}

			static void tellFailure(const File& file)
			{
				const std::string way = Reflect::toUtf8(file.report.HowToGoOn);
				complain(fmt::format("corvane: {}: {}{}{}", file.path, Reflect::toUtf8(file.report.Sentence), way.empty() ? "" : " ", way));
			}

			void tellHowToGoOn() const
			{
				if (notBegun > 0)
				{
					complain(fmt::format("corvane: {} of {} files are there, {} were not begun", succeeded, files.size(), notBegun));
				}
				complain("corvane: the same 'corvane get' goes on");
			}

			void tellProgress(File& file)
			{
				const int64 done = file.report.TakenOverBytes + file.report.TransferredBytes;
				if (bar)
				{
					bar->tell(ProgressBar::received(file.report.TotalBytes, done));
				}
				else if (table)
				{
					file.row = file.row ? file.row : &table->add(file.path);
					file.row->size = static_cast<double>(file.report.TotalBytes);
					file.row->done = static_cast<double>(done);
					file.row->rate.note(file.row->done);
				}
			}

			/** @return whether to draw once more. */
			bool draw()
			{
				const FCorvaneQueueReport all = queue->GetReport();
				table->tell({files.size(), ended, static_cast<double>(all.TotalBytes), static_cast<double>(all.Bytes)});
				return true;
			}

			ProgramLoop& loop;
			const GetOptions& options;
			const FCorvaneDownloadOptions download;
			std::vector<File> files;
			UCorvaneTransferQueue* const queue = UCorvaneTransferQueue::GetTransferQueue(queueName);
			std::optional<ProgressBar> bar; // of a single file
			std::optional<ProgressTable> table; // of several
			FTSTicker::FDelegateHandle drawing; // of the table
			size_t succeeded = 0;
			size_t ended = 0;
			size_t notBegun = 0; // of those, when a signal came
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
