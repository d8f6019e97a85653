#pragma once

#include "CoreMinimal.h"

#include "CorvaneFollowOptions.generated.h"

/** How a stream of server-sent events is followed. Times are seconds. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneFollowOptions
{
	GENERATED_BODY()

	/** Sent with every request. Last-Event-ID, Accept-Encoding and Content-Type are not set here. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	TMap<FString, FString> Headers;

	/** Asks with POST and Body instead of GET, each time it connects. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bPost = false;

	/** What is sent with POST. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString Body;

	/** Of Body. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString ContentType = TEXT("application/json");

	/** Goes on behind this event, which an earlier run saw last; empty = with whatever the server begins with. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	FString LastEventID;

	/**
	 * Connects again when a stream ends or breaks off, or its events are not taken for 10 seconds; else that is its outcome: Ended,
	 * or why it broke off. Tries that did not get at a stream are repeated all the same, and so is one that was paused; of POST only
	 * those that no server can have taken: without a connection, or answered with 425, 429 or 503.
	 */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	bool bReconnect = true;

	/** Before it connects again; what the server asks for (retry) takes its place. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double ReconnectSeconds = 3;

	/** What is waited in addition when tries bring nothing doubles up to this; a server may ask for more, up to an hour. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double LongestWaitSeconds = 60;

	/** Tries in a row that do not get at a stream, after which it gives up; 0 = it never does. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 Attempts = 10;

	/** Without a byte from the server, comments among them, after which it connects again; 0 = any time. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	double SilenceSeconds = 60;

	/** Of one line, and of the data of one event, in bytes; a stream with a longer one is left. */
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Corvane|Transfers")
	int32 MostEventBytes = 1024 * 1024;
};
