#include "Transfer.h"

#include "Host/HttpService.h"
#include "Redirects.h"
#include "Text.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace
{
	constexpr uint64 mostHeaderBytes = 256 << 10;
	/** The body of a followed redirect is read up to here, which saves the connection, and cut off beyond. */
	constexpr uint64 mostDroppedBytes = 64 << 10;

	CURL* makeHandle()
	{
		CURL* Handle = curl_easy_init();
		if (!Handle)
		{
			throw std::bad_alloc();
		}
		return Handle;
	}
} // namespace

FTransfer::FTransfer(FRound& InRound, const FHttpSettings& InSettings)
	: Round(InRound)
	, Settings(InSettings)
	, Easy(makeHandle())
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
	Hop = std::exchange(Request->Outgoing, std::nullopt);
	BeginHop();
}

bool FTransfer::BeginNextHop()
{
	if (!Next)
	{
		return false;
	}
	++HopsFollowed;
	Hop = std::exchange(Next, std::nullopt);
	if (Hop->Body && !Hop->Body->Rewind()) // not before: the last hop may have been sending when its answer came
	{
		Problem = "the body cannot be read once more";
		return false;
	}
	BodyBytes = BytesSent = 0;
	bConnected = false;
	BeginHop();
	return true;
}

std::shared_ptr<FHttpRequest> FTransfer::Release()
{
	curl_easy_reset(Easy); // it still points into what goes now
	Hop.reset();
	Next.reset();
	Response.Reset();
	Headers.Clear();
	HopsFollowed = 0;
	HeaderBytes = BodyBytes = BytesSent = 0;
	bConnected = bEnded = bSucceeded = false;
	Problem = nullptr;
	LastProgress = {};
	Request->RunningTransfer = nullptr;
	return std::move(Request);
}

void FTransfer::BeginHop()
{
	curl_easy_reset(Easy);
	ConfigureHandle();
	ConfigureVerb();
	ConfigureBody();
	ErrorText[0] = '\0';
}

void FTransfer::ConfigureHandle()
{
	const auto Set = [this](CURLoption Option, auto Value) { curl_easy_setopt(Easy, Option, Value); };
	Set(CURLOPT_PRIVATE, static_cast<void*>(this));
	Set(CURLOPT_CURLU, Hop->Url.Get());
	Set(CURLOPT_HTTPHEADER, Hop->Headers.Get());
	Set(CURLOPT_PROTOCOLS_STR, "http,https");
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
										static_cast<FTransfer*>(Self)->bConnected = true;
										static_cast<FTransfer*>(Self)->Touch();
										return CURL_PREREQFUNC_OK;
									}));
}

void FTransfer::ConfigureVerb()
{
	if (Text::EqualNoCase(Hop->Verb, "HEAD"))
	{
		curl_easy_setopt(Easy, CURLOPT_NOBODY, 1L);
	}
	else if (Hop->Verb != "GET")
	{
		curl_easy_setopt(Easy, CURLOPT_CUSTOMREQUEST, Hop->Verb.c_str());
	}
}

void FTransfer::ConfigureBody()
{
	const auto Set = [this](CURLoption Option, auto Value) { curl_easy_setopt(Easy, Option, Value); };
	if (Hop->bPlainHttp1)
	{
		Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
	}
	if (!Hop->bLengthIsTrue || Hop->bPlainHttp1)
	{
		Set(CURLOPT_FORBID_REUSE, 1L); // the peer would take the next request for the rest of this body, or the reverse
	}
	const uint64 Size = Hop->Body ? Hop->Body->GetSize() : 0;
	const bool bVerbHasBody = Hop->Verb == "POST" || Hop->Verb == "PUT" || Hop->Verb == "PATCH";
	if (Text::EqualNoCase(Hop->Verb, "HEAD") || (Size == 0 && !bVerbHasBody))
	{
		return;
	}
	Set(CURLOPT_POST, 1L);
	Set(CURLOPT_CUSTOMREQUEST, Hop->Verb.c_str());
	Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(Size));
	if (Hop->Body)
	{
		Set(CURLOPT_UPLOAD_BUFFERSIZE, Hop->Body->GetPortion());
	}
	Set(CURLOPT_READDATA, static_cast<void*>(this));
	using FRead = size_t (*)(char*, size_t, size_t, void*);
	Set(CURLOPT_READFUNCTION, static_cast<FRead>([](char* Buffer, size_t Width, size_t Number, void* Self)
								  { return static_cast<FTransfer*>(Self)->OnReadBody(Buffer, Width * Number); }));
	Set(CURLOPT_SEEKDATA, static_cast<void*>(this));
	using FSeek = int (*)(void*, curl_off_t, int);
	Set(CURLOPT_SEEKFUNCTION, static_cast<FSeek>([](void* Self, curl_off_t Offset, int Origin)
								  { return static_cast<FTransfer*>(Self)->OnSeekBody(Offset, Origin); }));
}

size_t FTransfer::OnReadBody(char* Buffer, size_t Room)
{
	Touch();
	const std::optional<size_t> Number = Hop->Body ? Hop->Body->Read(Buffer, Room) : 0;
	if (!Number)
	{
		Problem = "the file that is sent has become shorter";
		return CURL_READFUNC_ABORT;
	}
	BytesSent += *Number;
	if (*Number > 0)
	{
		NoteProgress();
	}
	return *Number;
}

/** libcurl goes back to the start when a kept connection turns out to be dead; it never asks for another place. */
int FTransfer::OnSeekBody(int64 Offset, int Origin)
{
	if (Offset != 0 || Origin != SEEK_SET || (Hop->Body && !Hop->Body->Rewind()))
	{
		return CURL_SEEKFUNC_FAIL;
	}
	BytesSent = 0;
	return CURL_SEEKFUNC_OK;
}

void FTransfer::NoteProgress()
{
	if (Request->WantsProgress() && !std::exchange(bDirty, true))
	{
		Round.Dirty.push_back(this);
	}
}

bool FTransfer::OnHeaderLine(std::string_view Line)
{
	Touch();
	HeaderBytes += Line.size();
	if (HeaderBytes > mostHeaderBytes)
	{
		Problem = "the headers are too long";
		return false;
	}
	if (Response || Next)
	{
		return true; // a trailer, behind the body
	}
	if (Line != "\r\n" && Line != "\n")
	{
		Headers.AddLine(Line);
		return true;
	}
	return Headers.StatusCode() < 200 || OnHeadersComplete(); // below 200 another block follows
}

bool FTransfer::OnHeadersComplete()
{
	const int32 Code = Headers.StatusCode();
	const std::string Location = Headers.Find("Location");
	if (!Hop->bPlainHttp1 && Redirects::IsRedirect(Code, Location))
	{
		const bool bMayFollow = HopsFollowed < Redirects::mostHops;
		Next = bMayFollow ? Redirects::NextHop(*Hop, Code, Location) : std::nullopt;
		if (Next)
		{
			return true;
		}
		Problem = bMayFollow ? "redirected to a URL that may not be asked" : "too many redirects";
	}
	else if (Headers.HasContradictingLengths())
	{
		Problem = "the answer gives two lengths";
	}
	Response = MakeShared<FHttpResponse>(std::move(Headers));
	Headers.Clear();
	Request->PublishResponse(Response);
	return !Problem;
}

bool FTransfer::OnBody(const char* Bytes, size_t Number)
{
	Touch();
	BodyBytes += Number;
	if (!Response)
	{
		return Next && BodyBytes <= mostDroppedBytes;
	}
	NoteProgress();
	if (!Response->GetBody().Append(Bytes, Number))
	{
		Problem = "the body is longer than memory allows";
		return false;
	}
	return true;
}

const char* FTransfer::Outcome(CURLcode Result) const
{
	if (Problem)
	{
		return Problem;
	}
	if (Result != CURLE_OK)
	{
		return ErrorText[0] ? ErrorText : curl_easy_strerror(Result);
	}
	return Response ? nullptr : "the answer had no final status";
}

bool FTransfer::IsStalled() const
{
	return bConnected && Round.Now - LastActivity > std::chrono::duration<double>(Settings.activityTimeoutSeconds);
}

FTransfer::FProgress FTransfer::TakeProgress()
{
	bDirty = false;
	LastProgress = Round.Now;
	return {BytesSent, BodyBytes};
}
