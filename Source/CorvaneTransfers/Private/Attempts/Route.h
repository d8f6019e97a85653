#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

/** How the tries of a transfer reach its file. Each is told as one exchange, however many the route makes of it. Thread: game thread. */
class FCorvaneRoute
{
public:
	virtual ~FCorvaneRoute() = default;
	/** @return why there is no way to the file, as a sentence; empty = nothing is known against it. */
	virtual FString FindFault() const { return FString(); }
	/**
	 * Sends one try, when none runs.
	 * @param Receiver  is told as by FCorvaneExchange::Start.
	 */
	virtual void Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver) = 0;
	/** Ends the try that runs soon, through OnEnd. Harmless when there is none. */
	virtual void Cancel() = 0;
};

/** The file is where it is asked for. */
class FCorvaneStraightRoute : public FCorvaneRoute
{
public:
	virtual void Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver) override
	{
		Exchange = FCorvaneExchange::Start(Asked, Receiver);
	}
	virtual void Cancel() override
	{
		if (Exchange.IsValid())
		{
			Exchange->Cancel();
		}
	}

private:
	TSharedPtr<FCorvaneExchange> Exchange; // of the last try
};
