#include "EventLines.h"

#include "CorvaneBPLibrary.h"
#include "PinOutput.h"
#include "Reflection.h"

#include <fmt/format.h>

namespace Program
{
	namespace
	{
		/** Nothing is thrown from here into the event: what cannot be written is told at the end of the program. */
		void writeLine(const std::string& line)
		{
			std::fwrite(line.data(), 1, line.size(), stdout);
			std::fflush(stdout); // a reader waits for it
		}

		/** A piece in one line, its own ends of lines spelt out. */
		std::string asLine(const Json& pins)
		{
			const std::string quoted = asJsonLine(pins.at("response"));
			return fmt::format("event: {}\n", quoted.substr(1, quoted.size() - 3)); // without quotes and end of line
		}

		Json named(const Json& pins)
		{
			Json line = {{"event", "onhttpServerSendEventDelegate"}};
			line.update(pins);
			return line;
		}
	} // namespace

	EventLines::EventLines(BodyOutput* body, bool asJson)
	{
		UObject* const target = UCorvaneBPLibrary::getCorvaneTarget();
		const FMulticastDelegateProperty* const event = Reflect::findEvent(target->GetClass(), "onhttpServerSendEventDelegate");
		HOST_CHECK(event);
		tap.emplace(*target, *event,
			[body, asJson](const Json& pins)
			{
				if (body)
				{
					return body->write(pins.at("response").get_ref<const std::string&>());
				}
				writeLine(asJson ? asJsonLine(named(pins)) : asLine(pins));
			});
	}
} // namespace Program
