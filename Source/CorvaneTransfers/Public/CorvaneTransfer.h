#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "Kismet/BlueprintAsyncActionBase.h"

#include "CorvaneTransfer.generated.h"

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
	/** Raised ten times a second at most while bytes move. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnProgress;

	/** The file, or whatever was wanted, is there, whole and checked. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnSuccess;

	/** It ended without success; the report says why, what is left and how to go on. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneTransferEvent OnFail;

	/** Stops the transfer until Continue; what has arrived is kept. Harmless when it is paused or over. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Pause() {}

	/** Goes on after Pause, without moving a byte twice. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Continue() {}

	/** Ends the transfer soon, through OnFail with Cancelled. What has arrived stays on disk for a later start. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	virtual void Cancel() {}

	/** Tells how it stands now, or what it ended with. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	virtual FCorvaneTransferReport GetReport() const { return FCorvaneTransferReport(); }

	/** Tells whether it stands still until Continue. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	virtual bool IsPaused() const { return false; }

	/** @return whether any transfer has not told its outcome yet. */
	static bool HasPendingWork();
};
