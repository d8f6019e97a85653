#include "Download/DownloadOptions.h"

#include "Attempts/Headers.h"
#include "Attempts/OptionFaults.h"

namespace CorvaneDownloadOptions
{
	static bool IsOwn(const FString& Name)
	{
		return Name == TEXT("Range") || Name == TEXT("If-Range") || Name == TEXT("If-Modified-Since") || Name == TEXT("Accept-Encoding");
	}

	static FString FindNumberFault(const FCorvaneDownloadOptions& Options)
	{
		if (Options.ExpectedSize < -1)
		{
			return TEXT("The expected size has to be 0 bytes or more, or -1 for any.");
		}
		return Options.BytesPerSecond < 0 ? FString(TEXT("The bytes per second have to be 0, for no limit, or more.")) : FString();
	}

	static FString FindHashFault(bool bIsReadable)
	{
		return bIsReadable
				   ? FString()
				   : TEXT("The expected hash cannot be read; it is written like sha256:0123456789abcdef... or, to be told it, sha256.");
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
	using namespace CorvaneDownloadOptions;
	return CorvaneOptionFaults::First({CorvaneOptionFaults::OfAddress(URL), FindHashFault(bHashIsReadable), FindTargetFault(Target),
		CorvaneOptionFaults::OfHeaders(Options.Headers, &IsOwn, TEXT("is the download's own and cannot be set")),
		CorvaneOptionFaults::OfTries(Options.Attempts, Options.FirstWaitSeconds, Options.LongestWaitSeconds, Options.SilenceSeconds),
		FindNumberFault(Options)});
}
