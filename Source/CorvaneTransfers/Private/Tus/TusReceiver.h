#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"

/** Takes the answer to one request of an upload, and the beginning of its body. Thread: that of the exchange's callbacks. */
class FCorvaneTusReceiver : public FCorvaneExchangeReceiver
{
public:
	/** @param Text  what the server wrote. */
	using FTell = TUniqueFunction<void(const FCorvaneExchangeResult&, const FString& Text)>;

	explicit FCorvaneTusReceiver(FTell InTell)
		: Tell(MoveTemp(InTell))
	{
	}

	virtual bool OnAnswer(const FCorvaneAnswer&) override { return true; }
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

private:
	FTell Tell;
	TArray<uint8> Text;
	int64 Seen = 0;
};
