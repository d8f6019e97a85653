#pragma once

#include "CoreMinimal.h"

#include "CorvaneQueueReport.generated.h"

/** How a queue stands. */
USTRUCT(BlueprintType)
struct CORVANETRANSFERS_API FCorvaneQueueReport
{
	GENERATED_BODY()

	/** Transfers that have not begun, or wait to go on. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Waiting = 0;

	/** Transfers that have a place. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Running = 0;

	/** Transfers that were paused one by one. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Paused = 0;

	/** Transfers that have succeeded, since there is this queue. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Done = 0;

	/** Transfers that ended otherwise. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int32 Failed = 0;

	/** Of all transfers so far, with those that earlier runs had left on disk. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 Bytes = 0;

	/** Of all transfers when they are through; -1 = some have not begun, or their servers do not tell. */
	UPROPERTY(BlueprintReadOnly, Category = "Corvane|Transfers")
	int64 TotalBytes = -1;
};
