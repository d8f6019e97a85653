#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"

/** Takes the answer to one request of an upload, and of its body what a person may read. Thread: that of the exchange's callbacks. */
class FCorvaneTusReceiver : public FCorvaneExchangeReceiver
{
public:
	/** @param Text  what the server wrote into an answer that is no success. */
	using FTell = TUniqueFunction<void(const FCorvaneExchangeResult&, const FString& Text)>;

	explicit FCorvaneTusReceiver(FTell InTell)
		: Tell(MoveTemp(InTell))
	{
	}

	virtual bool OnAnswer(const FCorvaneAnswer& Answer) override;
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

private:
	FTell Tell;
	TArray<uint8> Text;
	bool bWantsText = false;
	int64 Seen = 0;
};
