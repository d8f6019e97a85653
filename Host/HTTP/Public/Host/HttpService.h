#pragma once

#include <string>

/** The HTTP module's door for the loop in Launch and for programs. Thread: game thread. */
struct FHttpSettings
{
	double connectTimeoutSeconds = 30;
	/** A transfer that moves no byte for so long fails. */
	double activityTimeoutSeconds = 30;
	/** Requests that run at once to one host and port, at least 1; others wait for their turn, outside all time limits. */
	int connectionsPerHost = 6;
	/** Callbacks run on the game thread whatever policy a request asks for. */
	bool bForceGameThreadCallbacks = false;
	/** File of trusted certificates in PEM form; empty = the system's. */
	std::string certificateFile;
};

namespace HttpService
{
	/** Starts the HTTP thread. */
	void Start(const FHttpSettings& Settings);

	/** Cancels what still runs, joins the HTTP thread and delivers the completions that wait for the game thread. */
	void Stop();
} // namespace HttpService
