#include "Attempts/OptionFaults.h"

#include "Attempts/Address.h"
#include "Attempts/Headers.h"

/** Written so that what is no number does not fit either. */
bool CorvaneOptionFaults::IsTime(double Seconds)
{
	constexpr double Longest = 1e9;
	return Seconds >= 0 && Seconds <= Longest;
}

FString CorvaneOptionFaults::OfAddress(const FString& URL)
{
	return CorvaneAddress::IsUsable(URL) ? FString() : TEXT("This is no http or https address: ") + CorvaneAddress::ForLog(URL);
}

FString CorvaneOptionFaults::OfHeaders(
	const TMap<FString, FString>& Headers, const TFunction<bool(const FString& Name)>& IsOwn, const TCHAR* Whose)
{
	for (const TPair<FString, FString>& Header : Headers)
	{
		if (!CorvaneHeaders::IsName(Header.Key) || CorvaneHeaders::HasControl(Header.Value))
		{
			return TEXT("A header has a name or a value that cannot be sent: ") + Header.Key; // never the value, which may be a key
		}
		if (IsOwn(Header.Key))
		{
			return FString(TEXT("This header ")) + Whose + TEXT(": ") + Header.Key;
		}
	}
	return FString();
}

FString CorvaneOptionFaults::OfTries(int32 Attempts, double FirstWaitSeconds, double LongestWaitSeconds, double SilenceSeconds)
{
	if (Attempts < 1)
	{
		return TEXT("There has to be at least one attempt.");
	}
	if (!IsTime(FirstWaitSeconds) || !IsTime(LongestWaitSeconds))
	{
		return TEXT("The waits between attempts have to be 0 seconds or more.");
	}
	const bool bSilence = IsTime(SilenceSeconds) && SilenceSeconds > 0;
	return bSilence ? FString() : FString(TEXT("The limit of silence has to be more than 0 seconds."));
}

FString CorvaneOptionFaults::First(const TArray<FString>& Faults)
{
	for (const FString& Fault : Faults)
	{
		if (!Fault.IsEmpty())
		{
			return Fault;
		}
	}
	return FString();
}
