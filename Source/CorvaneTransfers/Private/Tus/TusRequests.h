#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "Files/FileHash.h"

/** Of the file, what requests tell. */
struct FCorvaneTusFileFacts
{
	int64 Size = 0;
	/** Without its folder. */
	FString Name;
	/** By its ending. */
	FString Type;
};

/**
 * The requests of one upload, without their bodies.
 *
 * What the caller has given to be sent, headers as well as a user and a password, may be keys of his: it goes to the host that he
 * has named, and to no other that the server names for the upload. Where redirects lead, the HTTP module alone decides.
 * Thread: one at a time.
 */
class FCorvaneTusRequests
{
public:
	FCorvaneTusRequests(const FString& InURL, const FCorvaneResumableOptions& InOptions)
		: URL(InURL)
		, Options(InOptions)
	{
	}

	/** Begins an upload. @param Bytes  of the file that go along. */
	FCorvaneExchangeRequest Create(const FCorvaneTusFileFacts& File, int64 Bytes) const;
	/** Asks how far it is. */
	FCorvaneExchangeRequest Ask(const FString& Upload) const { return Make(TEXT("HEAD"), Upload); }
	/** Sends a piece. @param Start  of it, in the file. */
	FCorvaneExchangeRequest Send(const FString& Upload, int64 Start) const;
	/** Wants the server to throw it away. */
	FCorvaneExchangeRequest Terminate(const FString& Upload) const { return Make(TEXT("DELETE"), Upload); }

	/** Adds the sum of a body. @param Hex  as FCorvaneFileHash gives it. */
	static void AddChecksum(FCorvaneExchangeRequest& Asked, ECorvaneHashKind Kind, const FString& Hex);

private:
	FCorvaneExchangeRequest Make(const TCHAR* Verb, const FString& Address) const;
	FString Metadata(const FCorvaneTusFileFacts& File) const;

	const FString URL;
	const FCorvaneResumableOptions Options;
};
