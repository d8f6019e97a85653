#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Upload/BodyStream.h"
#include "Upload/UploadMachine.h"

/** Keeps what the server says to one try, and closes the body behind it. Thread: that of the exchange's callbacks. */
class FCorvaneUploadReceiver : public FCorvaneExchangeReceiver
{
public:
	/** Random and NowUtc are still to be filled in. */
	using FTell = TUniqueFunction<void(const FCorvaneUploadTryEnd&)>;

	/** @param InLimit  bytes of the answer that are kept. */
	FCorvaneUploadReceiver(const TSharedRef<FCorvaneBodyStream>& InBody, int32 InLimit, FTell InTell);

	virtual bool OnAnswer(const FCorvaneAnswer& Answer) override;
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

private:
	const TSharedRef<FCorvaneBodyStream> Body;
	const int32 Limit;
	FTell Tell;
	TArray<uint8> Kept;
	int64 Dropped = 0;
};
