#include "Upload/UploadOptions.h"

#include "Attempts/Headers.h"
#include "Attempts/OptionFaults.h"

namespace CorvaneUploadOptions
{
	static bool IsOwn(const FString& Name, bool bFixedType)
	{
		return Name == TEXT("Content-Length") || Name == TEXT("Transfer-Encoding") || Name == TEXT("Accept-Encoding") ||
			   (bFixedType && Name == TEXT("Content-Type"));
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
	const FString Verb = VerbOf(Content, Options);
	const bool bVerbFits = Verb == TEXT("PUT") || Verb == TEXT("POST");
	const FString VerbFault = TEXT("An upload is sent by PUT or POST, not by this: ") + Verb;
	const FString HashFault = TEXT("The hash cannot be read; it is written like sha256:0123456789abcdef... or, to be told it, sha256.");
	const FString LimitFault = TEXT("The limit of the answer has to be 0 bytes or more.");
	const auto IsOwnOfThis = [&Content](const FString& Name) { return CorvaneUploadOptions::IsOwn(Name, Content.bFixedType); };
	return CorvaneOptionFaults::First({CorvaneOptionFaults::OfAddress(Content.URL), bVerbFits ? FString() : VerbFault,
		bHashIsReadable ? FString() : HashFault, Content.Fault, FindPathFault(Content.Segments),
		CorvaneOptionFaults::OfHeaders(Options.Headers, IsOwnOfThis, TEXT("is the upload's own and cannot be set")),
		CorvaneOptionFaults::OfTries(Options.Attempts, Options.FirstWaitSeconds, Options.LongestWaitSeconds, Options.SilenceSeconds),
		Options.AnswerLimit < 0 ? LimitFault : FString()});
}
