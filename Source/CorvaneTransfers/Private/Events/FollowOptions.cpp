#include "Events/FollowOptions.h"

#include "Attempts/Headers.h"
#include "Attempts/OptionFaults.h"

namespace CorvaneFollowOptions
{
	static bool IsOwn(const FString& Name)
	{
		return Name == TEXT("Last-Event-ID") || Name == TEXT("Accept-Encoding") || Name == TEXT("Content-Type");
	}

	static FString FindBodyFault(const FCorvaneFollowOptions& Options)
	{
		if (!Options.bPost)
		{
			return Options.Body.IsEmpty() ? FString() : FString(TEXT("There is a body, but it is not asked with POST."));
		}
		const bool bTyped = !Options.ContentType.IsEmpty() && !CorvaneHeaders::HasControl(Options.ContentType);
		return bTyped ? FString() : FString(TEXT("A body needs a content type."));
	}

	static FString FindNumberFault(const FCorvaneFollowOptions& Options)
	{
		if (!CorvaneOptionFaults::IsTime(Options.ReconnectSeconds) || !CorvaneOptionFaults::IsTime(Options.LongestWaitSeconds) ||
			!CorvaneOptionFaults::IsTime(Options.SilenceSeconds))
		{
			return TEXT("The waits and the limit of silence have to be 0 seconds or more.");
		}
		if (Options.Attempts < 0)
		{
			return TEXT("The attempts have to be 0, for any number, or more.");
		}
		const bool bFits = Options.MostEventBytes > 0 && Options.MostEventBytes <= MAX_int32 / 4;
		return bFits ? FString() : FString(TEXT("The limit of an event has to be between 1 byte and 512 MiB."));
	}
} // namespace CorvaneFollowOptions

FString CorvaneFollow::FindHeaderFault(const TMap<FString, FString>& Headers)
{
	return CorvaneOptionFaults::OfHeaders(
		Headers, &CorvaneFollowOptions::IsOwn, TEXT("has an option of its own, or none, and cannot be set"));
}

FString CorvaneFollow::FindFault(const FString& URL, const FCorvaneFollowOptions& Options)
{
	return CorvaneOptionFaults::First({CorvaneOptionFaults::OfAddress(URL), FindHeaderFault(Options.Headers),
		CorvaneFollowOptions::FindBodyFault(Options), CorvaneFollowOptions::FindNumberFault(Options)});
}

FCorvaneExchangeRequest CorvaneFollow::MakeRequest(
	const FString& URL, const FCorvaneFollowOptions& Options, const TMap<FString, FString>& Headers, const FString& LastEventID)
{
	constexpr double AnyTime = 7 * 24 * 60 * 60; // what the engine makes of 0 is not told
	FCorvaneExchangeRequest Asked;
	Asked.URL = URL;
	Asked.Headers.Add(TEXT("Accept"), TEXT("text/event-stream"));
	Asked.Headers.Add(TEXT("Cache-Control"), TEXT("no-store"));
	for (const TPair<FString, FString>& Header : Headers)
	{
		Asked.Headers.Add(Header.Key, Header.Value);
	}
	if (!LastEventID.IsEmpty() && !CorvaneHeaders::HasControl(LastEventID.Replace(TEXT("\t"), TEXT(" ")))) // tabs are no harm there
	{
		Asked.Headers.Add(TEXT("Last-Event-ID"), LastEventID);
	}
	if (Options.bPost)
	{
		Asked.Verb = TEXT("POST");
		Asked.Body = Options.Body;
		Asked.Headers.Add(TEXT("Content-Type"), Options.ContentType);
	}
	Asked.SilenceSeconds = static_cast<float>(Options.SilenceSeconds > 0 ? Options.SilenceSeconds : AnyTime);
	return Asked;
}
