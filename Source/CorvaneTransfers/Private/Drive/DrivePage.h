#pragma once

#include "Attempts/Answer.h"
#include "CoreMinimal.h"
#include "CorvaneTransfers.h"

/** What a page means that came where a file was asked for. */
struct FCorvaneDrivePage
{
	/** Where the file is behind the page's form or link; empty = nowhere. */
	FString FileAddress;
	/** Without an address: why, and in a sentence. */
	ECorvaneTransferOutcome Failure = ECorvaneTransferOutcome::ServerError;
	FString Sentence;
};

/**
 * The pages of the Drive service: the one that asks whether a file is wanted that was not scanned, the one about a quota, the
 * ones for those who may not have it. They are read by what they hold, not by how they are laid out. Thread: any.
 */
namespace CorvaneDrive
{
	/** Longer pages are not read. */
	constexpr int64 MostPageBytes = 4 * 1024 * 1024;

	/** @return what is wrong with an ID, as a sentence; empty = nothing. */
	FString FindIDFault(const FString& FileID);
	/** @return where a file is asked for. @param Base  scheme and host of the service. */
	FString MakeAddress(const FString& Base, const FString& FileID);

	/** @return the ID in such an address; empty when it is none. */
	FString FindID(const FString& Base, const FString& Address);

	/** Whether the body of an answer is a page of the service, which never is the file. */
	bool IsPage(const FCorvaneAnswer& Answer);
	/** @param PageAddress  where the page came from, behind all redirects. @param Code  it came with. */
	FCorvaneDrivePage ReadPage(const FString& Page, const FString& PageAddress, int32 Code);
} // namespace CorvaneDrive
