#include "EventLines.h"

#include "Console.h"
#include "CorvaneBPLibrary.h"
#include "InputError.h"
#include "PinOutput.h"
#include "Reflection.h"

namespace Program
{
	namespace
	{
		/** A text in one line, its own ends of lines spelt out. */
		std::string asLine(const Json& text)
		{
			const std::string quoted = asJsonText(text);
			return "event: " + quoted.substr(1, quoted.size() - 2);
		}

		Json named(const char* event, const Json& pins)
		{
			Json line = {{"event", event}};
			line.update(pins);
			return line;
		}
	} // namespace

	EventLines::EventLines(BodyOutput* bodyOutput, bool inJson)
		: body(bodyOutput)
		, asJson(inJson)
	{
		UObject* const target = UCorvaneBPLibrary::getCorvaneTarget();
		const FMulticastDelegateProperty* const event = Reflect::findEvent(target->GetClass(), "onhttpServerSendEventDelegate");
		HOST_CHECK(event);
		taps.emplace_back(*target, *event,
			[this, event](const Json& pins)
			{
				if (body)
				{
					return body->write(pins.at("response").get_ref<const std::string&>());
				}
				printLine(asJson ? asJsonText(named(event->Name, pins)) : asLine(pins.at("response")));
			});
	}

	void EventLines::watch(UObject& node)
	{
		const FMulticastDelegateProperty* const event = Reflect::findEvent(node.GetClass(), "OnEvent");
		if (!event)
		{
			return;
		}
		if (body)
		{
			throw Reflect::InputError("a stream of events has no body, each event is a line");
		}
		taps.emplace_back(node, *event,
			[this, event](Json pins)
			{
				pins.erase("Report"); // how the stream stands is no part of an event
				printLine(asJson ? asJsonText(named(event->Name, pins)) : asLine(pins.at("Data")));
			});
	}
} // namespace Program
