#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneTransfer.generated.h"

class FCorvaneQueueRun;
class FCorvaneTransferRun;

/** @param Report  how the transfer stands, or what it ended with. */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_OneParam(FCorvaneTransferEvent, const FCorvaneTransferReport&, Report);

/**
 * One transfer, as a latent node and as an object. It is held from its start until its outcome, which comes exactly once and
 * never inside the call that starts it. Thread: game thread.
 */
UCLASS(Abstract, BlueprintType, meta = (ExposedAsyncProxy = "Transfer"))
class CORVANETRANSFERS_API UCorvaneTransfer : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()

public:
	using FTell = TFunction<void(const FCorvaneTransferReport&)>;

	/** Raised ten times a second at most while bytes move. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnProgress;

	/** The file, or whatever was wanted, is there, whole and checked. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnSuccess;

	/** It ended without success; the report says why, what is left and how to go on. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnFail;

	/** Starts it, or has it wait in its queue. A second call does nothing. */
	virtual void Activate() override;

	/**
	 * Stops the transfer until Continue; what has arrived is kept. Its place in a queue is free for others as soon as it stands
	 * still. Harmless when it is paused or over.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Pause();

	/** Goes on after Pause, without moving a byte twice; in a queue as soon as there is a place for it. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Continue();

	/**
	 * Ends the transfer soon, through OnFail with Cancelled. What a later start can go on with is kept: of a download on disk, of a
	 * resumable upload at the server, unless bTerminateOnCancel; other uploads begin anew.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Cancel();

	/** Tells how it stands now, or what it ended with. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	virtual FCorvaneTransferReport GetReport() const;

	/** Tells whether it stands still until Continue. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	virtual bool IsPaused() const;

	/** @return whether any transfer has not told its outcome yet. */
	static bool HasPendingWork();

protected:
	/** Where a transfer waits for its start. */
	struct FQueueWish
	{
		/** Empty = nowhere. */
		FString Queue;
		int32 Priority = 0;
		/** Whose limit it falls under: scheme, host and port. */
		FString Host;
	};

	virtual FQueueWish GetQueueWish() const { return {}; }
	/**
	 * Makes what does the work.
	 * @param OnEnd  is to be called once, later than its start. @param OnMove  ten times a second at most while bytes move; GetReport
	 * tells how it stands.
	 */
	virtual TSharedPtr<FCorvaneTransferRun> MakeRun(FTell OnEnd, TFunction<void()> OnMove);

	/** Of native code, called behind the events; either may be unset. */
	FTell NativeEnd;
	FTell NativeMove;

private:
	friend class FCorvaneQueueRun;

	void NeedRun();
	void TellProgress();
	void End(const FCorvaneTransferReport& Report);

	TSharedPtr<FCorvaneTransferRun> Run; // from its start, or the first look at it, to the outcome, for what it holds may be large
	bool bActivated = false;
	FCorvaneTransferReport Outcome;
	TSharedPtr<FCorvaneQueueRun> Queue; // null when it waits in none
	int64 Ticket = 0; // in the queue
};
