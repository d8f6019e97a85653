#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "RunningTransfers.h"
#include "Templates/Function.h"

class FCorvaneSharedPace;

/** One transfer, as its node and a queue see it, whatever it moves. Thread: game thread. */
class FCorvaneTransferRun : public FCorvaneRunningTransfer
{
public:
	/** Comes before Start. */
	virtual void SharePace(const TSharedRef<FCorvaneSharedPace>& Pace) = 0;
	/** Begins, once. Nothing is told inside this call. */
	virtual void Start() = 0;
	virtual void Pause() = 0;
	virtual void Continue() = 0;
	/** Ends it soon; what has arrived is kept. One that comes before Start is kept for it, and nothing is sent. */
	virtual void Cancel() = 0;
	/** The limit of the pace that it shares is another one. */
	virtual void OnPaceChanged() {}
	virtual bool IsPaused() const = 0;
	/** @param Tell  is called when a pause has stopped all, maybe inside Pause, and maybe several times. */
	virtual void WhenPaused(TFunction<void()> Tell) = 0;
	/** @return how it stands. */
	virtual FCorvaneTransferReport GetReport() const = 0;
};
