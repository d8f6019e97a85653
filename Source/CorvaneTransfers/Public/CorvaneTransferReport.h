#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransfers.h"

#include "CorvaneTransferReport.generated.h"

/** How a transfer stands or what it ended with. Sizes are bytes, times seconds. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneTransferReport
{
	GENERATED_BODY()

	/** Running as long as it goes on. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	ECorvaneTransferOutcome Outcome = ECorvaneTransferOutcome::Running;

	/** Why, for people. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString Sentence;

	/** The server's status code, of the last answer; 0 = there was none. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Code = 0;

	/** Without user and password. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString AskedAddress;

	/** Where redirects led, without user and password; empty when there was no answer. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString ReachedAddress;

	/** Of the whole file, or of all that is sent; -1 = unknown. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 TotalBytes = -1;

	/** What went over the network in this run: into the file, or out of it. What had to be thrown away or sent again counts, too. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 TransferredBytes = 0;

	/** Of those, what an upload had sent in vain and has to send again: without them the rest is how far it is. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 RepeatedBytes = 0;

	/** Bytes of the file that an earlier run had left. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 TakenOverBytes = 0;

	/** Requests for the file that were sent; those for a page in front of it come on top. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Attempts = 0;

	/** How often it began at the first byte again. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Restarts = 0;

	/** Why, one for each restart. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	TArray<FString> RestartReasons;

	/** Waited before tries, without the time that it was paused. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	double SecondsWaited = 0;

	/** From the start to now or to the outcome, without waits and pauses. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	double SecondsWorked = 0;

	/** In hexadecimal digits, if it was asked for and the file is whole. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString Hash;

	/** The file under the target's name is the one that was there before: it was to be kept, or is as new as the server's. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	bool bTargetKept = false;

	/** Bytes that a later start can go on with: on disk, or, of a resumable upload, at the server. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 BytesLeft = 0;

	/** What is left and how to go on, or what to look at first, for people; empty = nothing. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString HowToGoOn;

	/** What the server said to what it was sent, as text, up to a limit. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	FString Answer;
};
