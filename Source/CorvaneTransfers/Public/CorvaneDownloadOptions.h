#pragma once

#include "CoreMinimal.h"

#include "CorvaneDownloadOptions.generated.h"

/** What becomes of a file that stands where a download shall put its own. Scripts save the numbers. */
UENUM(BlueprintType)
enum class ECorvaneIfTargetExists : uint8
{
	/** It is replaced, once the new one is whole. */
	Replace = 0,
	/** It stays, and nothing is asked for: a success. */
	Keep = 1,
	/** It stays, and the download is refused. */
	Fail = 2,
	/** It is replaced if the server has a newer one; else it stays: a success. */
	OnlyIfNewer = 3 UMETA(DisplayName = "Only if newer")
};

/** How a file is downloaded. Times are seconds, sizes bytes. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneDownloadOptions
{
	GENERATED_BODY()

	/** Sent with every request. Range, If-Range, If-Modified-Since and Accept-Encoding are the download's own. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	TMap<FString, FString> Headers;

	/** Tries in a row that bring no new byte, before it gives up. Those that bring one are not limited. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Attempts = 5;

	/** Before the second try; it doubles with each failure, and a random share of it is waited. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double FirstWaitSeconds = 1;

	/** No single wait is longer. A server that wants a longer one (Retry-After) ends the download, which says so. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double LongestWaitSeconds = 60;

	/** Without a byte from the server, after which a try has failed. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double SilenceSeconds = 30;

	/** -1 = any. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int64 ExpectedSize = -1;

	/** "sha256:" (or sha1, md5) and the hexadecimal digits that the file must have; "sha256" alone to be told; empty = none. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Hash;

	/** The limit; 0 = none. A server that sends no parts of a file is held to it only roughly. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int64 BytesPerSecond = 0;

	/** What becomes of a file that stands under the target's name already. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	ECorvaneIfTargetExists IfTargetExists = ECorvaneIfTargetExists::Replace;

	/** The file gets the server's time of its last change. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bKeepServerTime = false;

	/** Goes on with what an earlier start has left on disk. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bResume = true;

	/** Name of the queue that it waits in (Get Transfer Queue); empty = none, it starts at once. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Queue;

	/** In the queue those with a higher one start first. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Priority = 0;
};
