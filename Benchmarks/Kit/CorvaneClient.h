#pragma once

#include "CorvaneBPLibrary.h"
#include "GameLoop.h"

#include <string>
#include <string_view>

/** @return settings that let a workload have as many requests under way to one host as it wants. */
FGameLoopSettings unlimitedConnections();

/** Keeps a handler bound to an event for as long as this object lives. Thread: game thread. */
class BoundHandler
{
public:
	/** @param inEvent  outlives this object. */
	BoundHandler(FMulticastScriptDelegate& inEvent, FMulticastScriptDelegate::FHandler handler)
		: event(inEvent)
		, number(event.AddHandler(std::move(handler)))
	{
	}
	~BoundHandler() { event.RemoveHandler(number); }
	BoundHandler(const BoundHandler&) = delete;
	BoundHandler& operator=(const BoundHandler&) = delete;

private:
	FMulticastScriptDelegate& event;
	const uint64 number;
};

/** Makes requests the way a game does: through the functions for scripts and with handlers at the events. Thread: game thread. */
class CorvaneClient
{
public:
	/** How requests are made and their results heard. */
	enum class Way
	{
		BuilderAndEvent,
		Node
	};

	/** @param inLoop  outlives this object. */
	explicit CorvaneClient(FGameLoop& inLoop, Way inWay = Way::BuilderAndEvent);

	/** Starts one GET, in a call or a node of its own. */
	void start(const std::string& url, bool bindServerSendEvent = false);

	/**
	 * Fetches a URL so many times, each next time as soon as a result arrives. Throws std::runtime_error unless every body
	 * is as expected.
	 * @param inFlight  requests that run at a time.
	 */
	void fetch(const std::string& url, int requests, int inFlight, std::string_view expectedBody);

	/** The results that arrived since this object was made. */
	int completed() const { return numCompleted; }
	/** Waits until so many results have arrived and nothing of them is left running. Throws std::runtime_error when that takes too long. */
	void waitUntilCompleted(int number);

private:
	void startNode(const std::string& url, bool bindServerSendEvent);
	/** Takes the parameters of a result; those of the event and of a node's outputs are the same. */
	void take(void* const* arguments);

	FGameLoop& loop;
	const Way way;
	int numCompleted = 0;
	FMulticastScriptDelegate::FHandler onResult; // may be empty
	BoundHandler listener;
};
