#pragma once

#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "CorvaneQueueReport.h"
#include "CorvaneResumableOptions.h"
#include "CorvaneTransfer.h"
#include "Templates/SharedPointer.h"
#include "UObject/Object.h"

#include "CorvaneTransferQueue.generated.h"

class FCorvaneQueueRun;

/** @param Report  how the queue stands. */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_OneParam(FCorvaneQueueEvent, const FCorvaneQueueReport&, Report);

/**
 * @param Transfer  the one that ended; its own events were raised before.
 * @param Report  what it ended with.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(
	FCorvaneQueueTransferEvent, UCorvaneTransfer*, Transfer, const FCorvaneTransferReport&, Report);

/**
 * Transfers that share places, hosts and bytes per second. A transfer waits in the queue that its options name; of those that
 * wait, higher priorities start first, then hosts take turns, then the one that came first. Each ends with its own one outcome,
 * also when the program ends before its turn. A queue lives as long as the program. Thread: game thread.
 */
UCLASS(BlueprintType)
class CORVANETRANSFERS_API UCorvaneTransferQueue : public UObject
{
	GENERATED_BODY()

public:
	/** Raised ten times a second at most while bytes of its transfers move. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneQueueEvent OnProgress;

	/** One of its transfers has ended, well or not. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneQueueTransferEvent OnTransferEnd;

	/** All of its transfers have ended. Raised again when others have come and ended, too. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneQueueEvent OnIdle;

	/**
	 * Finds a queue, or makes it: 8 transfers at once, 6 to a host, and no limit of bytes per second.
	 * @param Name  as the options of transfers have it; letters of another case are the same. Not empty: a transfer without a
	 *   queue's name waits in none.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	static UCorvaneTransferQueue* GetTransferQueue(const FString& Name);

	/**
	 * Changes the limits. What runs goes on; new ones start, and bytes move, under the new limits.
	 * @param MostAtOnce  transfers that run at the same time; at least 1.
	 * @param MostPerHost  of those, to one scheme, host and port; at least 1. The engine limits connections, too.
	 * @param BytesPerSecond  of all together; 0 = no limit. A server that sends no parts of a file is held to it only roughly, and
	 *  so is an upload that goes out in a single request.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void SetLimits(int32 MostAtOnce = 8, int32 MostPerHost = 6, int64 BytesPerSecond = 0);

	/** Pauses what runs, and starts nothing, until Continue. What has arrived is kept. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void Pause();

	/** Goes on after Pause, without moving a byte twice. Transfers that were paused one by one wait for their own Continue. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void Continue();

	/** Cancels all that run or wait; each ends through its OnFail with Cancelled. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void CancelAll();

	/**
	 * Goes on, in this queue, with the downloads that earlier runs of the program have left in a folder: the journals there tell
	 * address and target. OnTransferEnd tells of each, and OnIdle comes also when there is none. What this or another program is
	 * just downloading is left alone or refused.
	 * @param Folder  where the files were to stand. Folders in it are not looked at.
	 * @param Options  for all of them; what no journal holds, such as headers with keys, is given here.
	 * @param OnlyOrigin  such as https://example.com: others stay as they are, and get to see no headers; empty = all.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers", meta = (AutoCreateRefTerm = "Options"))
	void ResumeFolder(const FString& Folder, const FCorvaneDownloadOptions& Options, const FString& OnlyOrigin);

	/**
	 * Goes on, in this queue, with the resumable uploads that earlier runs of the program have begun: their notes tell endpoint and
	 * file. Those whose endpoint has a query, which may be a key, are taken up only by starting them again. OnTransferEnd and OnIdle
	 * tell as those of ResumeFolder do.
	 * @param Options  for all of them: where the notes are kept, and what none of them holds, such as headers with keys.
	 * @param OnlyOrigin  such as https://example.com: others stay as they are, and get to see no headers; empty = all.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers", meta = (AutoCreateRefTerm = "Options"))
	void ResumeUploads(const FCorvaneResumableOptions& Options, const FString& OnlyOrigin);

	/** Tells how it stands. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	FCorvaneQueueReport GetReport() const;

	/** Tells whether nothing starts until Continue. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	bool IsPaused() const;

private:
	TSharedPtr<FCorvaneQueueRun> Run; // null of objects that GetTransferQueue has not made
	FString OwnName;
};
