#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Templates/SharedPointer.h"

/** How the tries of a transfer reach its file. Each is told as one exchange, however many the route makes of it. */
class FCorvaneRoute
{
public:
	virtual ~FCorvaneRoute() = default;
	/** @return why there is no way to the file, as a sentence; empty = nothing is known against it. Thread: game thread. */
	virtual FString FindFault() const { return FString(); }

	/** Comes before each Start, maybe on another thread: a Cancel from here on is for the try that follows. */
	void Prepare();
	/**
	 * Sends one try, when none runs. Thread: any.
	 * @param Receiver  is told as by FCorvaneExchange::Start; of a try that was cancelled already it hears the end inside this call.
	 */
	virtual void Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver) = 0;
	/** Ends the try that runs, or that was prepared, soon, through OnEnd. Harmless when there is none. Thread: any. */
	void Cancel();
	/** @return whether the try that was prepared last was cancelled. Thread: any. */
	bool IsCancelled() const;

protected:
	/** Starts the next exchange of the try. @return false when the try was cancelled: then nothing is sent. */
	bool Send(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver);

private:
	mutable FCriticalSection Guard; // a cancel comes before the next exchange or finds it
	TSharedPtr<FCorvaneExchange> Exchange CORVANE_GUARDED_BY(Guard); // of the try, the last
	bool bCancelled CORVANE_GUARDED_BY(Guard) = false;
};

/** The file is where it is asked for. */
class FCorvaneStraightRoute : public FCorvaneRoute
{
public:
	virtual void Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver) override;
};
