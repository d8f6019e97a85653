#pragma once

#include <curl/curl.h>
#include <functional>
#include <string>
#include <string_view>

/** Puts the heads of a transfer together, out of what libcurl tells when it is asked to be verbose. Thread: HTTP thread. */
class FHeadTap
{
public:
	using FListener = std::function<void(bool bSent, std::string_view Head)>;

	/** @param InListener  outlives the tap; may be empty, then nothing is put together. */
	explicit FHeadTap(const FListener& InListener)
		: Listener(InListener)
	{
	}

	void Configure(CURL* Easy);
	/** A request is about to be sent. */
	void BeginExchange();

private:
	void TakeSent(std::string_view Bytes);
	void TakeReceived(std::string_view Line);

	const FListener& Listener;
	std::string Sent;
	bool bSentOver = false; // what follows is the body
	std::string Received;
};
