#pragma once

#include "HttpRequest.h"

/** Brings callbacks to the thread that each request asked for. Called on the HTTP thread, but for the last two. */
class FCallbacks
{
public:
	/** With bForce, every callback runs on the game thread. Called before the HTTP thread runs. */
	void Reset(bool bForce);

	/** @param Sent, Received  bytes of the body since the hop began. */
	void Progress(const std::shared_ptr<FHttpRequest>& Request, uint64 Sent, uint64 Received);
	void Complete(const std::shared_ptr<FHttpRequest>& Request, FHttpResponsePtr Shown, bool bSucceeded);

	/** Runs what waits for the game thread; all later callbacks run on the HTTP thread. Thread: game thread. */
	void EndGameThread();

	/** Completes a request that no HTTP thread takes, through the game thread. Thread: any. */
	static void CompleteWithoutService(const std::shared_ptr<FHttpRequest>& Request);

private:
	template <class Callback>
	void Run(const FHttpRequest& Request, Callback Body);

	// Held while a callback is posted: EndGameThread may not overtake one on its way, and the next ones have to wait for it.
	std::mutex Gate;
	bool bForceGameThread = false;
	bool bGameThreadEnded = false;
};
