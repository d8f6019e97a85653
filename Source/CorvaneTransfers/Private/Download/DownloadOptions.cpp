#include "Download/DownloadOptions.h"

#include "Attempts/Address.h"
#include "Attempts/Headers.h"

namespace CorvaneDownloadOptions
{
	static bool IsOwn(const FString& Name)
	{
		return Name == TEXT("Range") || Name == TEXT("If-Range") || Name == TEXT("If-Modified-Since") || Name == TEXT("Accept-Encoding");
	}

	static FString FindHeaderFault(const TMap<FString, FString>& Headers)
	{
		for (const TPair<FString, FString>& Header : Headers)
		{
			if (!CorvaneHeaders::IsName(Header.Key) || CorvaneHeaders::HasControl(Header.Value))
			{
				return TEXT("A header has a name or a value that cannot be sent: ") + Header.Key; // never the value, which may be a key
			}
			if (IsOwn(Header.Key))
			{
				return TEXT("This header is the download's own and cannot be set: ") + Header.Key;
			}
		}
		return FString();
	}

	/** Written so that what is no number does not fit either. */
	static bool IsTime(double Seconds)
	{
		constexpr double Longest = 1e9;
		return Seconds >= 0 && Seconds <= Longest;
	}

	static FString FindNumberFault(const FCorvaneDownloadOptions& Options)
	{
		if (Options.Attempts < 1)
		{
			return TEXT("There has to be at least one attempt.");
		}
		if (!IsTime(Options.FirstWaitSeconds) || !IsTime(Options.LongestWaitSeconds))
		{
			return TEXT("The waits between attempts have to be 0 seconds or more.");
		}
		if (!IsTime(Options.SilenceSeconds) || Options.SilenceSeconds <= 0)
		{
			return TEXT("The limit of silence has to be more than 0 seconds.");
		}
		if (Options.ExpectedSize < -1)
		{
			return TEXT("The expected size has to be 0 bytes or more, or -1 for any.");
		}
		return Options.BytesPerSecond < 0 ? FString(TEXT("The bytes per second have to be 0, for no limit, or more.")) : FString();
	}

	static FString FindTargetFault(const FString& Target)
	{
		if (Target.IsEmpty() || CorvaneHeaders::HasControl(Target))
		{
			return TEXT("There is no file to write to: its path is empty or has control characters.");
		}
		const bool bFolder =
			Target.EndsWith(TEXT("/"), ESearchCase::CaseSensitive) || Target.EndsWith(TEXT("\\"), ESearchCase::CaseSensitive);
		return bFolder ? TEXT("The path to write to names a folder, not a file: ") + Target : FString();
	}
} // namespace CorvaneDownloadOptions

FString CorvaneDownload::FindFault(const FString& URL, const FString& Target, const FCorvaneDownloadOptions& Options, bool bHashIsReadable)
{
	if (!CorvaneAddress::IsUsable(URL))
	{
		return TEXT("This is no http or https address: ") + CorvaneAddress::ForLog(URL);
	}
	if (!bHashIsReadable)
	{
		return TEXT("The expected hash cannot be read; it is written like sha256:0123456789abcdef... or, to be told it, sha256.");
	}
	const FString Faults[] = {CorvaneDownloadOptions::FindTargetFault(Target), CorvaneDownloadOptions::FindHeaderFault(Options.Headers),
		CorvaneDownloadOptions::FindNumberFault(Options)};
	for (const FString& Fault : Faults)
	{
		if (!Fault.IsEmpty())
		{
			return Fault;
		}
	}
	return FString();
}
