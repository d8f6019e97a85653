#include "Transfer.h"

#include "Host/HttpService.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <new>

namespace
{
	CURL* makeHandle()
	{
		CURL* Handle = curl_easy_init();
		if (!Handle)
		{
			throw std::bad_alloc();
		}
		return Handle;
	}

	int32 readStatusCode(std::string_view StatusLine)
	{
		int32 Code = 0;
		const size_t Blank = StatusLine.find(' ');
		if (Blank != StatusLine.npos)
		{
			std::from_chars(StatusLine.data() + Blank + 1, StatusLine.data() + StatusLine.size(), Code);
		}
		return Code;
	}

	bool isConnectionError(CURLcode Result)
	{
		switch (Result)
		{
		case CURLE_COULDNT_RESOLVE_PROXY:
		case CURLE_COULDNT_RESOLVE_HOST:
		case CURLE_COULDNT_CONNECT:
		case CURLE_OPERATION_TIMEDOUT: // connecting took too long; the other limits are not libcurl's
		case CURLE_SSL_CONNECT_ERROR:
		case CURLE_PEER_FAILED_VERIFICATION:
			return true;
		default:
			return false;
		}
	}
} // namespace

FTransfer::FTransfer(const FClock::time_point& InNow, const FHttpSettings& InSettings)
	: Now(InNow)
	, Settings(InSettings)
	, Easy(makeHandle())
	, HeadTap(InSettings.onHead)
{
}

FTransfer& FTransfer::Of(CURL* Handle)
{
	char* Self = nullptr;
	curl_easy_getinfo(Handle, CURLINFO_PRIVATE, &Self);
	return *reinterpret_cast<FTransfer*>(Self);
}

void FTransfer::Begin(std::shared_ptr<FHttpRequest> InRequest)
{
	Request = std::move(InRequest);
	Request->RunningTransfer = this;
	BodySize = Request->Body ? Request->Body->GetSize() : 0;
	Lines = RequestHeaders::ToWire(Request->Headers, BodySize);
	ActivityTimeout = Request->ActivityTimeoutSeconds.value_or(Settings.activityTimeoutSeconds);
	Timeout = Request->TimeoutSeconds;
	Begun = Now;
	ErrorText[0] = '\0';
	ConfigureHandle();
	ConfigureCallbacks();
	ConfigureVerb();
	ConfigureBody();
}

std::shared_ptr<FHttpRequest> FTransfer::Release()
{
	NoteAddress();
	curl_easy_reset(Easy); // it still points into what goes now
	Lines.reset();
	Problem = nullptr;
	BlockCode = 0;
	Length.reset();
	BytesSent = 0;
	bAnswered = bConnected = bEnded = false;
	Request->RunningTransfer = nullptr;
	return std::move(Request);
}

void FTransfer::NoteAddress()
{
	long Hops = 0;
	const char* Where = nullptr;
	curl_easy_getinfo(Easy, CURLINFO_REDIRECT_COUNT, &Hops);
	curl_easy_getinfo(Easy, CURLINFO_EFFECTIVE_URL, &Where);
	if (Hops > 0 && Where)
	{
		Request->EffectiveURL = Text::FromUtf8(Where);
	}
}

void FTransfer::ConfigureHandle()
{
	constexpr long mostRedirects = 20;
	const auto Set = [this](CURLoption Option, auto Value) { curl_easy_setopt(Easy, Option, Value); };
	Set(CURLOPT_PRIVATE, static_cast<void*>(this));
	Set(CURLOPT_CURLU, Request->Url->Get());
	Set(CURLOPT_HTTPHEADER, Lines.get());
	Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
	Set(CURLOPT_ACCEPT_ENCODING, ""); // all that it can decode
	Set(CURLOPT_PROTOCOLS_STR, "http,https");
	Set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
	Set(CURLOPT_MAXREDIRS, mostRedirects);
	Set(CURLOPT_NOSIGNAL, 1L);
	Set(CURLOPT_QUICK_EXIT, 1L); // else removing a handle waits for its name look-up
	Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
	Set(CURLOPT_BUFFERSIZE, 64L << 10);
	Set(CURLOPT_ERRORBUFFER, ErrorText);
	Set(CURLOPT_CONNECTTIMEOUT_MS, std::max(1L, std::lround(Settings.connectTimeoutSeconds * 1000)));
	if (!Settings.certificateFile.empty())
	{
		Set(CURLOPT_CAINFO, Settings.certificateFile.c_str());
	}
	const bool bBodyBeginsInHeader = RequestHeaders::HoldBeginningOfBody(Request->Headers);
	Set(CURLOPT_FOLLOWLOCATION, bBodyBeginsInHeader ? 0L : 1L);
	const FString Announced = Request->Headers.Get(TEXT("Content-Length"));
	const uint64 Sent = Request->Verb == "HEAD" ? 0 : BodySize;
	if ((Announced.IsEmpty() ? std::to_string(BodySize) : Text::ToUtf8(Announced)) != std::to_string(Sent))
	{
		Set(CURLOPT_FORBID_REUSE, 1L); // the peer would take the next request for the rest of this body, or the reverse
	}
}

void FTransfer::ConfigureCallbacks()
{
	const auto Set = [this](CURLoption Option, auto Value) { curl_easy_setopt(Easy, Option, Value); };
	using FData = size_t (*)(char*, size_t, size_t, void*);
	Set(CURLOPT_HEADERDATA, static_cast<void*>(this));
	Set(CURLOPT_HEADERFUNCTION, static_cast<FData>(
									[](char* Bytes, size_t, size_t Number, void* Self) {
										return static_cast<FTransfer*>(Self)->OnHeaderLine({Bytes, Number}) ? Number : 0;
									}));
	Set(CURLOPT_WRITEDATA, static_cast<void*>(this));
	Set(CURLOPT_WRITEFUNCTION, static_cast<FData>([](char* Bytes, size_t, size_t Number, void* Self)
								   { return static_cast<FTransfer*>(Self)->OnBody(Bytes, Number) ? Number : 0; }));
	using FReady = int (*)(void*, char*, char*, int, int);
	Set(CURLOPT_PREREQDATA, static_cast<void*>(this));
	Set(CURLOPT_PREREQFUNCTION, static_cast<FReady>(
									[](void* Self, char*, char*, int, int)
									{
										static_cast<FTransfer*>(Self)->OnRequestDue();
										return CURL_PREREQFUNC_OK;
									}));
	HeadTap.Configure(Easy);
}

void FTransfer::ConfigureVerb()
{
	const std::string& Verb = Request->Verb;
	if (Verb == "HEAD")
	{
		curl_easy_setopt(Easy, CURLOPT_NOBODY, 1L);
	}
	else if (Verb == "PUT")
	{
		curl_easy_setopt(Easy, CURLOPT_UPLOAD, 1L);
	}
	else if (Verb == "POST" || BodySize > 0)
	{
		curl_easy_setopt(Easy, CURLOPT_POST, 1L);
	}
	if (Verb != "GET" && Verb != "HEAD" && Verb != "PUT" && Verb != "POST")
	{
		curl_easy_setopt(Easy, CURLOPT_CUSTOMREQUEST, Verb.c_str());
		curl_easy_setopt(Easy, CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL)); // the verb stays, so the body has to
	}
}

void FTransfer::ConfigureBody()
{
	const auto Set = [this](CURLoption Option, auto Value) { curl_easy_setopt(Easy, Option, Value); };
	Set(Request->Verb == "PUT" ? CURLOPT_INFILESIZE_LARGE : CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(BodySize));
	Set(CURLOPT_UPLOAD_BUFFERSIZE, Request->Body ? Request->Body->GetPortion() : 64L << 10);
	Set(CURLOPT_READDATA, static_cast<void*>(this));
	using FRead = size_t (*)(char*, size_t, size_t, void*);
	Set(CURLOPT_READFUNCTION, static_cast<FRead>([](char* Buffer, size_t Width, size_t Number, void* Self)
								  { return static_cast<FTransfer*>(Self)->OnReadBody(Buffer, Width * Number); }));
	Set(CURLOPT_SEEKDATA, static_cast<void*>(this));
	using FSeek = int (*)(void*, curl_off_t, int);
	Set(CURLOPT_SEEKFUNCTION, static_cast<FSeek>([](void* Self, curl_off_t Offset, int Origin)
								  { return static_cast<FTransfer*>(Self)->OnSeekBody(Offset, Origin); }));
}

/** Called before each hop, with the connection at hand. */
void FTransfer::OnRequestDue()
{
	bConnected = true;
	Touch();
	HeadTap.BeginExchange();
	long Hops = 0;
	curl_easy_getinfo(Easy, CURLINFO_REDIRECT_COUNT, &Hops);
	if (Hops > 0)
	{
		const char* Where = "";
		curl_easy_getinfo(Easy, CURLINFO_EFFECTIVE_URL, &Where);
		if (!Request->Url->HasSameHost(Where))
		{
			RequestHeaders::DropForOtherHost(Lines.get());
		}
	}
}

size_t FTransfer::OnReadBody(char* Buffer, size_t Room)
{
	Touch();
	const std::optional<size_t> Number = Request->Body ? Request->Body->Read(Buffer, Room) : 0;
	if (!Number)
	{
		Problem = "what is sent cannot be read any further";
		return CURL_READFUNC_ABORT;
	}
	BytesSent += *Number;
	if (*Number > 0)
	{
		Request->NoteSent(BytesSent);
	}
	return *Number;
}

/** libcurl goes back to the start when a kept connection turns out to be dead, and for a redirect; never to another place. */
int FTransfer::OnSeekBody(int64 Offset, int Origin)
{
	const bool bMayHaveArrived = BytesSent == BodySize && !bAnswered; // twice is worse than not at all
	if (Offset != 0 || Origin != SEEK_SET || bMayHaveArrived || !Request->Body || !Request->Body->Rewind())
	{
		return CURL_SEEKFUNC_FAIL;
	}
	BytesSent = 0;
	bAnswered = false;
	return CURL_SEEKFUNC_OK;
}

bool FTransfer::OnHeaderLine(std::string_view Line)
{
	Touch();
	bAnswered = true;
	Request->BeginResponse();
	Line = Line.substr(0, Line.find_last_not_of("\r\n") + 1);
	if (Line.starts_with("HTTP/"))
	{
		BlockCode = readStatusCode(Line);
		Length.reset();
		if (!IsHidden())
		{
			Request->TakeStatus(BlockCode);
		}
		return true;
	}
	const size_t Colon = Line.find(':');
	return IsHidden() || Colon == Line.npos || OnHeader(Text::Trim(Line.substr(0, Colon)), Text::Trim(Line.substr(Colon + 1)));
}

bool FTransfer::OnHeader(std::string_view Name, std::string_view Value)
{
	if (Text::EqualNoCase(Name, "Content-Length") && !TakeLength(Value))
	{
		Problem = "nobody can tell the length of the answer";
		return false;
	}
	Request->TakeHeader(Text::FromUtf8(Name), Text::FromUtf8(Value));
	return true;
}

bool FTransfer::TakeLength(std::string_view Value)
{
	uint64 Number = 0;
	const auto [End, Error] = std::from_chars(Value.data(), Value.data() + Value.size(), Number);
	const bool bReadable = Error == std::errc() && End == Value.data() + Value.size() && Number <= static_cast<uint64>(MAX_int64);
	if (!bReadable || Length.value_or(Number) != Number)
	{
		return false;
	}
	Length = Number;
	Request->TakeLength(Number);
	return true;
}

bool FTransfer::OnBody(char* Bytes, size_t Number)
{
	Touch();
	const bool bTaken = Request->TakeBody(Bytes, Number);
	if (!bTaken)
	{
		Problem = "nobody takes the rest of the body";
	}
	return bTaken;
}

FHttpOutcome FTransfer::Judge(CURLcode Result) const
{
	if (Request->bBytesDropped)
	{
		return {EHttpFailureReason::Cancelled, 0};
	}
	long Code = 0;
	curl_easy_getinfo(Easy, CURLINFO_RESPONSE_CODE, &Code);
	FHttpOutcome Judged{EHttpFailureReason::None, static_cast<int32>(Code)};
	if (Result != CURLE_OK)
	{
		const char* const Text = Problem ? Problem : ErrorText[0] ? ErrorText : curl_easy_strerror(Result);
		UE_LOG(LogHttp, Warning, TEXT("Request failed: %s"), *Text::FromUtf8(Text));
		Judged.Reason = isConnectionError(Result) ? EHttpFailureReason::ConnectionError : EHttpFailureReason::Other;
	}
	return Judged;
}

std::optional<EHttpFailureReason> FTransfer::FindPassedLimit() const
{
	using FSeconds = std::chrono::duration<double>;
	if (Timeout && Now - Begun > FSeconds(*Timeout))
	{
		return EHttpFailureReason::TimedOut;
	}
	if (bConnected && Now - LastActivity > FSeconds(ActivityTimeout))
	{
		return EHttpFailureReason::ConnectionError;
	}
	return std::nullopt;
}
