#pragma once

#include <functional>
#include <string>
#include <string_view>

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
	/**
	 * Is told the head of every request as it was sent, redirects among them, and of every answer as it came, secrets and all.
	 * Empty = nobody listens.
	 * @param bSent  whether it is a request's.
	 * @param Head  its first line and headers, each with its line end.
	 * @note Thread: HTTP thread.
	 */
	std::function<void(bool bSent, std::string_view Head)> onHead;
};

namespace HttpService
{
	/** Starts the HTTP thread. */
	void Start(const FHttpSettings& Settings);

	/** Cancels what still runs, joins the HTTP thread and delivers the completions that wait for the game thread. */
	void Stop();
} // namespace HttpService
