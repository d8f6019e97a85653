#include "Attempts/Route.h"

#include "Misc/ScopeLock.h"

void FCorvaneRoute::Prepare()
{
	const FScopeLock Lock(&Guard);
	bCancelled = false;
	Exchange.Reset();
}

void FCorvaneRoute::Cancel()
{
	TSharedPtr<FCorvaneExchange> Running;
	{
		const FScopeLock Lock(&Guard);
		bCancelled = true;
		Running = Exchange;
	}
	if (Running.IsValid())
	{
		Running->Cancel();
	}
}

bool FCorvaneRoute::IsCancelled() const
{
	const FScopeLock Lock(&Guard);
	return bCancelled;
}

bool FCorvaneRoute::Send(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver)
{
	const FScopeLock Lock(&Guard);
	if (!bCancelled)
	{
		Exchange = FCorvaneExchange::Start(Asked, Receiver);
	}
	return !bCancelled;
}

void FCorvaneStraightRoute::Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& Receiver)
{
	if (!Send(Asked, Receiver))
	{
		Receiver->OnEnd(FCorvaneExchangeResult());
	}
}
