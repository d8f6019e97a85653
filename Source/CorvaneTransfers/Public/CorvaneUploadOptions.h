#pragma once

#include "CoreMinimal.h"

#include "CorvaneUploadOptions.generated.h"

/** How something is uploaded. Times are seconds, sizes bytes. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneUploadOptions
{
	GENERATED_BODY()

	/** Sent with every try. Content-Length is the upload's own, and so is Content-Type of a form. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	TMap<FString, FString> Headers;

	/** PUT or POST; empty = POST for a form, and PUT for a file. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Verb;

	/** The address may be asked twice: a POST is tried again although the server may have taken some of it, or all. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bMayBeRepeated = false;

	/** Tries before it gives up. There is one for a POST, unless nothing of it was sent or it may be repeated. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Attempts = 5;

	/** Before the second try; it doubles with each failure, and a random share of it is waited. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double FirstWaitSeconds = 1;

	/** No single wait is longer. A server that wants a longer one (Retry-After) ends the upload, which says so. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double LongestWaitSeconds = 60;

	/** Without a byte in either direction, after which a try has failed: also the time a server may take to think about what it got. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double SilenceSeconds = 60;

	/**
	 * "sha256" (or sha1, md5) to be told the hash of the bytes of the files, one file after the other; with a colon and
	 * hexadecimal digits behind it, bytes of any other hash are not sent to the end. Empty = none.
	 */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Hash;

	/** Of what the server says, how many bytes are kept for the report. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 AnswerLimit = 64 * 1024;

	/** Name of the queue that it waits in (Get Transfer Queue); empty = none, it starts at once. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Queue;

	/** In the queue those with a higher one start first. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Priority = 0;
};
