#include "CallFrame.h"
#include "Commands.h"
#include "CorvaneBPLibrary.h"
#include "FunctionNames.h"
#include "InputError.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "NearestName.h"
#include "PinOutput.h"
#include "ProgressBar.h"
#include "RequestResults.h"
#include "UObject/UObjectGlobals.h"

#include <fmt/format.h>

namespace Program
{
	namespace
	{
		void setPin(const Reflect::Function& function, Reflect::CallFrame& frame, const std::string& assignment)
		{
			const size_t equals = assignment.find('=');
			if (equals == std::string::npos)
			{
				throw Reflect::InputError(fmt::format("'{}' is no pin=value", assignment));
			}
			const std::string pin = assignment.substr(0, equals);
			const std::optional<size_t> index = frame.findInput(pin);
			if (!index)
			{
				throw Reflect::InputError(fmt::format(
					"{}: unknown pin '{}'{}", function.name, pin, Reflect::suggestion(pin, Reflect::inputNames(*function.function))));
			}
			const Json value = parseWord(assignment.substr(equals + 1), frame[*index].type());
			frame.set(*index, pin, JsonSource(value));
		}

		/** One call from its arguments to its outcome. */
		class Call
		{
		public:
			Call(FGameLoop& gameLoop, const Reflect::Function& calledFunction, const CallOptions& options)
				: loop(gameLoop)
				, function(calledFunction)
				, frame(calledFunction)
			{
				for (const std::string& assignment : options.pins)
				{
					setPin(function, frame, assignment);
				}
			}

			/** @return the pins to print; nothing when what was started ended without saying so. */
			std::optional<Json> run()
			{
				const RequestResults results;
				const ProgressBar progress;
				frame.invoke();
				if (Reflect::nodeClassOf(*function.function))
				{
					return runNode(results);
				}
				const TArray<FhttpRequest>* const records = builtRecords();
				return records ? runRequests(results, *records) : finishedOutputs();
			}

		private:
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

			std::optional<Json> runNode(const RequestResults& results)
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
					taps.emplace_back(*node, *event, [&outcome](const Json& pins) { outcome = outcome.value_or(pins); });
				}
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

			void runToIdle() { loop.RunUntilIdle(UCorvaneBPLibrary::hasPendingWork); }

			FGameLoop& loop;
			const Reflect::Function& function;
			Reflect::CallFrame frame;
		};
	} // namespace

	int callFunction(const Settings& settings, const CallOptions& options)
	{
		const Reflect::Function& function = functionNamed(options.function);
		ProgramLoop loop(settings);
		const std::optional<Json> pins = Call(loop, function, options).run();
		if (!pins)
		{
			fmt::print(stderr, "corvane: {} ended without a result\n", function.name);
			return exitFailed;
		}
		printPins(*pins, options.json);
		return isFailure(*pins) ? exitFailed : exitGood;
	}
} // namespace Program
