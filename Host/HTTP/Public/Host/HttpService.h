#pragma once

#include <string>

/** The HTTP module's door for the loop in Launch and for programs. Thread: game thread. */
struct FHttpSettings
{
	double connectTimeoutSeconds = 30;
	/** A transfer that moves no byte for so long fails. */
	double activityTimeoutSeconds = 30;
	/** Callbacks run on the game thread whatever policy a request asks for. */
	bool bForceGameThreadCallbacks = false;
	/** A failed exchange hands its partial response to the completion callback, as some platforms of the engine do. */
	bool bPartialResponseOnFailure = false;
	/** File of trusted certificates in PEM form; empty = the system's. */
	std::string certificateFile;
};

namespace HttpService
{
	/** Starts the HTTP thread. */
	void Start(const FHttpSettings& Settings);

	/**
	 * Runs the callbacks that wait for the game thread; from then on every callback runs on the HTTP thread, because the
	 * game thread is about to wait for the last ones.
	 */
	void EndGameThreadCallbacks();

	/** Cancels what still runs, delivers its completions and joins the HTTP thread. */
	void Stop();
} // namespace HttpService
