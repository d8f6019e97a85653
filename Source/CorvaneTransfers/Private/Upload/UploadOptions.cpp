#include "Upload/UploadOptions.h"

#include "Attempts/Address.h"
#include "Attempts/Headers.h"

namespace CorvaneUploadOptions
{
	static bool IsOwn(const FString& Name, bool bFixedType)
	{
		return Name == TEXT("Content-Length") || Name == TEXT("Transfer-Encoding") || Name == TEXT("Accept-Encoding") ||
			   (bFixedType && Name == TEXT("Content-Type"));
	}

	static FString FindHeaderFault(const TMap<FString, FString>& Headers, bool bFixedType)
	{
		for (const TPair<FString, FString>& Header : Headers)
		{
			if (!CorvaneHeaders::IsName(Header.Key) || CorvaneHeaders::HasControl(Header.Value))
			{
				return TEXT("A header has a name or a value that cannot be sent: ") + Header.Key; // never the value, which may be a key
			}
			if (IsOwn(Header.Key, bFixedType))
			{
				return TEXT("This header is the upload's own and cannot be set: ") + Header.Key;
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

	static FString FindNumberFault(const FCorvaneUploadOptions& Options)
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
		return Options.AnswerLimit < 0 ? FString(TEXT("The limit of the answer has to be 0 bytes or more.")) : FString();
	}

	static FString FindPathFault(const TArray<FCorvaneBodySegment>& Segments)
	{
		for (const FCorvaneBodySegment& Segment : Segments)
		{
			if (CorvaneHeaders::HasControl(Segment.File.Path))
			{
				return TEXT("The path of a file has control characters.");
			}
		}
		return FString();
	}
} // namespace CorvaneUploadOptions

FString CorvaneUploadOptions::VerbOf(const FCorvaneUploadContent& Content, const FCorvaneUploadOptions& Options)
{
	return (Options.Verb.IsEmpty() ? Content.Verb : Options.Verb).ToUpper();
}

FString CorvaneUploadOptions::FindFault(const FCorvaneUploadContent& Content, const FCorvaneUploadOptions& Options, bool bHashIsReadable)
{
	if (!CorvaneAddress::IsUsable(Content.URL))
	{
		return TEXT("This is no http or https address: ") + CorvaneAddress::ForLog(Content.URL);
	}
	const FString Verb = VerbOf(Content, Options);
	if (Verb != TEXT("PUT") && Verb != TEXT("POST"))
	{
		return TEXT("An upload is sent by PUT or POST, not by this: ") + Verb;
	}
	if (!bHashIsReadable)
	{
		return TEXT("The hash cannot be read; it is written like sha256:0123456789abcdef... or, to be told it, sha256.");
	}
	const FString Faults[] = {
		Content.Fault, FindPathFault(Content.Segments), FindHeaderFault(Options.Headers, Content.bFixedType), FindNumberFault(Options)};
	for (const FString& Fault : Faults)
	{
		if (!Fault.IsEmpty())
		{
			return Fault;
		}
	}
	return FString();
}
