#include "BodyOutput.h"
#include "CallFrame.h"
#include "CallInput.h"
#include "Commands.h"
#include "Console.h"
#include "CorvaneBPLibrary.h"
#include "DownloadSummary.h"
#include "EndSignals.h"
#include "EventLines.h"
#include "FunctionNames.h"
#include "InputError.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "PinOutput.h"
#include "ProgressBar.h"
#include "RequestResults.h"
#include "UObject/UObjectGlobals.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		/** Every other event of a node is. */
		bool isOutcome(std::string_view event)
		{
			return event != "OnProgress" && event != "OnBeforeAttempt" && event != "OnOpen" && event != "OnEvent";
		}

		/** A stream has come to its end in order, or to none. */
		bool isBad(std::string_view outcome, const Json& pins)
		{
			return outcome == "OnFail" || (outcome == "OnClose" && pins.at("Report").at("Outcome") != "Ended");
		}

		/** One call from its arguments to its outcome. */
		class Call
		{
		public:
			Call(ProgramLoop& gameLoop, const Reflect::Function& calledFunction, const CallOptions& callOptions)
				: loop(gameLoop)
				, function(calledFunction)
				, options(callOptions)
				, frame(calledFunction)
			{
				setPins(function, frame, options);
			}

			/** @return the exit status. */
			int run()
			{
				const std::optional<DownloadSummary> download = DownloadSummary::of(frame);
				if (options.bodyAlone || !options.bodyFile.empty())
				{
					refuseBodyOf(download);
					body.emplace(options.bodyFile);
				}
				const std::optional<Json> pins = outcome();
				if (std::ferror(stdout) || EndSignals::asked())
				{
					return exitFailed; // nobody could read on, or wants to
				}
				if (body)
				{
					body->finish();
				}
				if (!pins)
				{
					complain(fmt::format("corvane: {} ended without a result", function.name));
					return exitFailed;
				}
				if (body)
				{
					writeBody(*pins);
				}
				else
				{
					printPins(download ? download->replaceBody(*pins) : *pins, options.json);
				}
				return hasFailed || isFailure(*pins) ? exitFailed : exitGood;
			}

		private:
			void refuseBodyOf(const std::optional<DownloadSummary>& download) const
			{
				if (download)
				{
					throw Reflect::InputError(fmt::format("{} writes the body to a file of its own", function.name));
				}
			}

			void writeBody(const Json& pins)
			{
				body->writeBodyOf(pins);
				body->finish();
				if (isFailure(pins))
				{
					complain(fmt::format("corvane: the status is {}", pins.value("statusCode", 0)));
				}
			}

			/** @return the pins of the result; nothing when what was started ended without saying so. */
			std::optional<Json> outcome()
			{
				const RequestResults results;
				ProgressBar progress(options.progress);
				EventLines events(body ? &*body : nullptr, options.json);
				frame.invoke();
				if (Reflect::nodeClassOf(*function.function))
				{
					return runNode(results, progress, events);
				}
				const TArray<FhttpRequest>* const records = builtRecords();
				return records ? runRequests(results, *records) : finishedOutputs();
			}

			/** @return the records that a builder made; null when the function is no builder. */
			const TArray<FhttpRequest>* builtRecords() const
			{
				const std::optional<size_t> index = frame.findOutput("httpRequests");
				const bool isBuilder = index && &frame[*index].type() == &PropertyTypeOf<TArray<FhttpRequest>>();
				return isBuilder ? static_cast<const TArray<FhttpRequest>*>(frame[*index].get()) : nullptr;
			}

			std::optional<Json> runRequests(const RequestResults& results, const TArray<FhttpRequest>& records)
			{
				const std::string requestID = outputs().at("requestID").get<std::string>();
				UCorvaneBPLibrary* target = nullptr;
				UCorvaneBPLibrary::executeHttpRequests(records, target); // a refused request is not among them
				runToIdle();
				const Json* const outcome = results.of(requestID);
				return outcome ? std::optional(*outcome) : std::nullopt;
			}

			std::optional<Json> runNode(const RequestResults& results, ProgressBar& progress, EventLines& events)
			{
				auto* const node = Cast<UBlueprintAsyncActionBase>(frame.returnedObject());
				if (!node)
				{
					return std::nullopt;
				}
				std::optional<Json> outcome;
				std::list<EventTap> taps; // they hold the node
				for (const FMulticastDelegateProperty* event : Reflect::eventsOf(node->GetClass()))
				{
					const std::string_view name = event->Name;
					if (isOutcome(name))
					{
						taps.emplace_back(*node, *event,
							[this, &outcome, name](const Json& pins)
							{
								hasFailed = hasFailed || (!outcome && isBad(name, pins));
								outcome = outcome.value_or(pins);
							});
					}
				}
				progress.watch(*node);
				events.watch(*node);
				node->Activate();
				runToIdle();
				const Json* const refusal = results.first(); // a refusing builder answers before anybody hears the node
				return outcome || !refusal ? outcome : std::optional(*refusal);
			}

			std::optional<Json> finishedOutputs()
			{
				Json pins = outputs();
				runToIdle(); // what the function left behind, such as a queued write
				return pins;
			}

			Json outputs() const
			{
				JsonSink sink;
				frame.writeOutputs(sink);
				return sink.take();
			}

			/** A stream may have no end of its own: it ends when it can be written no further. */
			void runToIdle()
			{
				bool isLate = false;
				loop.runToIdle(
					[&]
					{
						isLate = options.timeoutSeconds > 0 && secondsSinceStart() > options.timeoutSeconds;
						return isLate || (body && body->isBroken());
					});
				if (isLate)
				{
					throw std::runtime_error(fmt::format("{} took more than {} s", function.name, options.timeoutSeconds));
				}
			}

			double secondsSinceStart() const { return std::chrono::duration<double>(Clock::now() - start).count(); }

			using Clock = std::chrono::steady_clock;

			ProgramLoop& loop;
			const Reflect::Function& function;
			const CallOptions& options;
			Reflect::CallFrame frame;
			bool hasFailed = false; // as a node says it
			std::optional<BodyOutput> body; // when it is wanted alone
			const Clock::time_point start = Clock::now();
		};
	} // namespace

	int callFunction(const Settings& settings, const CallOptions& options)
	{
		const Reflect::Function& function = functionNamed(options.function);
		Settings own = settings;
		FHttpSettings& http = own.loop.http; // its limits for silence shall not be shorter than what was asked for
		http.connectTimeoutSeconds = std::max(http.connectTimeoutSeconds, options.timeoutSeconds);
		http.activityTimeoutSeconds = std::max(http.activityTimeoutSeconds, options.timeoutSeconds);
		ProgramLoop loop(own);
		return Call(loop, function, options).run();
	}
} // namespace Program
