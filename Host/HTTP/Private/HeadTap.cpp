#include "HeadTap.h"

void FHeadTap::Configure(CURL* Easy)
{
	if (!Listener)
	{
		return;
	}
	BeginExchange();
	curl_easy_setopt(Easy, CURLOPT_VERBOSE, 1L);
	curl_easy_setopt(Easy, CURLOPT_DEBUGDATA, static_cast<void*>(this));
	using FDebug = int (*)(CURL*, curl_infotype, char*, size_t, void*);
	curl_easy_setopt(Easy, CURLOPT_DEBUGFUNCTION,
		static_cast<FDebug>(
			[](CURL*, curl_infotype Kind, char* Bytes, size_t Number, void* Self)
			{
				FHeadTap& Tap = *static_cast<FHeadTap*>(Self);
				if (Kind == CURLINFO_HEADER_OUT)
				{
					Tap.TakeSent({Bytes, Number});
				}
				else if (Kind == CURLINFO_HEADER_IN)
				{
					Tap.TakeReceived({Bytes, Number});
				}
				return 0;
			}));
}

void FHeadTap::BeginExchange()
{
	Sent.clear();
	bSentOver = false;
	Received.clear();
}

/** A body that begins in a header comes along with it. */
void FHeadTap::TakeSent(std::string_view Bytes)
{
	constexpr std::string_view emptyLine = "\r\n\r\n";
	if (bSentOver)
	{
		return;
	}
	Sent += Bytes;
	const size_t End = Sent.find(emptyLine);
	if (End != Sent.npos)
	{
		bSentOver = true;
		Listener(true, std::string_view(Sent).substr(0, End + 2));
	}
}

void FHeadTap::TakeReceived(std::string_view Line)
{
	if (Line == "\r\n" || Line == "\n")
	{
		Listener(false, Received);
		Received.clear();
	}
	else
	{
		Received += Line;
	}
}
