#include "AddressFault.h"
#include "Commands.h"
#include "Console.h"
#include "CorvaneFollowEvents.h"
#include "EndSignals.h"
#include "FileContent.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "PinOutput.h"
#include "ValueTransfer.h"

#include <algorithm>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		/** A Content-Type is that of the body. */
		void addHeader(FCorvaneFollowOptions& stream, const std::string& line)
		{
			const auto [name, value] = parseHeader(line);
			if (stream.bPost && name == TEXT("Content-Type"))
			{
				stream.ContentType = value;
			}
			else
			{
				stream.Headers.Add(name, value);
			}
		}

		FCorvaneFollowOptions streamOptions(const FollowOptions& options)
		{
			FCorvaneFollowOptions stream;
			stream.bPost = options.body.has_value();
			stream.Body = Reflect::toFString(textMeantBy(options.body.value_or("")));
			stream.bReconnect = !options.staysAway;
			stream.LastEventID = Reflect::toFString(options.lastId);
			for (const std::string& line : options.headers)
			{
				addHeader(stream, line);
			}
			return stream;
		}

		/** A stream from its start to its report. */
		class Follow
		{
		public:
			Follow(ProgramLoop& gameLoop, const FollowOptions& followOptions)
				: loop(gameLoop)
				, options(followOptions)
			{
			}

			/** @return the exit status. */
			int run()
			{
				UCorvaneFollowEvents::FHandlers handlers;
				handlers.OnOpen = [this](const FCorvaneTransferReport&) { open(); };
				handlers.OnEvent = [this](const FString& id, const FString& type, const FString& data)
				{ hear(Reflect::toUtf8(id), Reflect::toUtf8(type), Reflect::toUtf8(data)); };
				handlers.OnClose = [this](const FCorvaneTransferReport& report) { close(report); };
				stream = UCorvaneFollowEvents::Start(Reflect::toFString(options.address), streamOptions(options), handlers);
				loop.runToIdle({});
				loop.end();
				if (EndSignals::asked() && !lastId.empty())
				{
					complain(fmt::format("corvane: --last-id '{}' goes on", lastId));
				}
				return isGood ? exitGood : exitFailed;
			}

		private:
			void open()
			{
				tell(connections++ == 0 ? "corvane: connected"
					 : lastId.empty()   ? "corvane: connected again"
										: fmt::format("corvane: connected again, behind the event {}", lastId));
			}

			void hear(const std::string& id, const std::string& type, const std::string& data)
			{
				lastId = id;
				const bool isWanted =
					options.types.empty() || std::find(options.types.begin(), options.types.end(), type) != options.types.end();
				if (!isWanted || isEnough())
				{
					return;
				}
				printLine(options.json ? asJsonText({{"ID", id}, {"Type", type}, {"Data", data}}) : data);
				++told;
				if (isEnough() || std::ferror(stdout))
				{
					stream->Cancel();
				}
			}

			bool isEnough() const { return options.most > 0 && told == options.most; }

			void close(const FCorvaneTransferReport& report)
			{
				const bool hasNoMore = report.Outcome == ECorvaneTransferOutcome::Ended && !EndSignals::asked();
				isGood = hasNoMore || isEnough();
				if (!isGood && !EndSignals::asked())
				{
					complain("corvane: " + Reflect::toUtf8(report.Sentence));
				}
				else if (hasNoMore)
				{
					tell("corvane: " + Reflect::toUtf8(report.Sentence));
				}
			}

			void tell(const std::string& line) const
			{
				if (!options.quiet)
				{
					complain(line);
				}
			}

			ProgramLoop& loop;
			const FollowOptions& options;
			UCorvaneFollowEvents* stream = nullptr;
			std::string lastId;
			int connections = 0;
			int told = 0;
			bool isGood = false;
		};
	} // namespace

	int followEvents(const Settings& settings, const FollowOptions& options)
	{
		if (const std::string fault = addressFault(options.address); !fault.empty())
		{
			throw Reflect::InputError(fault);
		}
		ProgramLoop loop(settings);
		leaveOutOfLog({"Events: "});
		return Follow(loop, options).run();
	}
} // namespace Program
