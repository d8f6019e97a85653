#pragma once

#include "CoreMinimal.h"

#include "CorvaneResumableOptions.generated.h"

/** How a file is uploaded in a way that can go on. Times are seconds, sizes bytes. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneResumableOptions
{
	GENERATED_BODY()

	/**
	 * Sent with every request, such as Authorization. A server may give the upload an address on another host: none of them go
	 * there. Tus-Resumable, Accept-Encoding, what describes the body, and all that begin with Upload- are the upload's own.
	 */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	TMap<FString, FString> Headers;

	/** Told to the server when the upload begins, besides filename and filetype, which one of these names replaces. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	TMap<FString, FString> Metadata;

	/** The file goes out in pieces of this size, below 2 GiB: some servers and proxies take no longer body. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int64 PieceBytes = 64 * 1024 * 1024;

	/** Tries in a row that bring no new byte to the server, before it gives up. Those that bring one are not limited. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Attempts = 5;

	/** Before the second try; it doubles with each failure, and a random share of it is waited. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double FirstWaitSeconds = 1;

	/** No single wait is longer. A server that wants a longer one (Retry-After) ends the upload, which says so. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double LongestWaitSeconds = 60;

	/** Without a byte in either direction, after which a try has failed. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double SilenceSeconds = 30;

	/** "sha256" (or sha1, md5) to be told that of the file; with ":" and hexadecimal digits it has to be theirs, or nothing is sent. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Hash;

	/**
	 * "sha1" (or sha256, md5) for a sum that goes with each piece, which the server compares; empty = sha1 if the server says that
	 * it compares sums, else none.
	 */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString PieceChecksum;

	/** Sends the first piece with the request that begins the upload. A server that does not know this gets the piece twice. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bFirstPieceAtOnce = false;

	/**
	 * Cancel asks the server to throw away what it has; else it is kept, and a later start goes on with it. Of one that still waits
	 * in a queue nothing is sent, and what an earlier start has brought is kept.
	 */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bTerminateOnCancel = false;

	/** Goes on with what an earlier start has brought to the server. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bResume = true;

	/** Where notes of running uploads are kept; empty = "Corvane/Uploads" in the project's saved folder. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString JournalFolder;

	/** Name of the queue that it waits in (Get Transfer Queue); empty = none, it starts at once. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Queue;

	/** In the queue those with a higher one start first. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Priority = 0;
};
