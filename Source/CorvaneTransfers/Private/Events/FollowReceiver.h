#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/ByteBuffer.h"

/** Brings the bytes of one stream of events to whoever reads them. Thread: that of the exchange's callbacks. */
class FCorvaneFollowReceiver : public FCorvaneExchangeReceiver
{
public:
	/** Told in this order, Ready for each time that bytes are waiting again; the last once, and always. */
	struct FTold
	{
		/** The answer is a stream, and its first byte is there: before that, the engine does not tell that all lines are. */
		TUniqueFunction<void(const FCorvaneAnswer&)> Opened;
		TUniqueFunction<void()> Ready;
		TUniqueFunction<void(const FCorvaneExchangeResult&)> Ended;
	};

	FCorvaneFollowReceiver(const TSharedRef<FCorvaneByteBuffer>& InBuffer, FTold InTold);

	virtual bool OnAnswer(const FCorvaneAnswer& Answer) override;
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

private:
	const TSharedRef<FCorvaneByteBuffer> Buffer;
	FTold Told;
	bool bStream = false;
	int64 Unwanted = 0;
};
