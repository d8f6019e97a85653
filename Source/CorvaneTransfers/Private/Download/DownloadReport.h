#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransfers.h"

/** What a download ended with. */
struct FCorvaneDownloadReport
{
	ECorvaneTransferOutcome Outcome = ECorvaneTransferOutcome::Running;
	/** Why, for people. */
	FString Sentence;
	/** The server's, of the last answer; 0 = there was none. */
	int32 Code = 0;
	/** Both without user and password; the second is empty when there was no answer. */
	FString AskedAddress;
	FString ReachedAddress;
	/** Bytes of the whole file; -1 = unknown. */
	int64 TotalBytes = -1;
	/** Bytes that came over the network in this run and went into the file, those that had to be thrown away again too. */
	int64 TransferredBytes = 0;
	/** Bytes of the file that an earlier run had left. */
	int64 TakenOverBytes = 0;
	/** Requests that were sent. */
	int32 Attempts = 0;
	/** How often it began at the first byte again, and why. */
	int32 Restarts = 0;
	TArray<FString> RestartReasons;
	/** Without the time it was paused. */
	double SecondsWaited = 0;
	double SecondsWorked = 0;
	/** In hexadecimal digits, if it was asked for and the file is whole. */
	FString Hash;
	/** The file under the target's name is the one that was there before; a success only by "keep" and "only if newer". */
	bool bTargetKept = false;
	/** Bytes beside the target that a later start can go on with. */
	int64 BytesLeft = 0;
	/** What is left on disk and how to go on, for people; empty = nothing. */
	FString HowToGoOn;
};
