#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransfer.h"
#include "CorvaneUploadOptions.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneUpload.generated.h"

struct FCorvaneUploadContent;

/**
 * An upload in one request. Files are read while they are sent, in bounded memory; none is changed, copied or loaded. Each
 * try begins at the first byte: Pause holds back the next try, since the protocol has no pause inside of one. Thread: game thread.
 */
UCLASS(Abstract, BlueprintType, meta = (ExposedAsyncProxy = "Transfer"))
class CORVANETRANSFERS_API UCorvaneUpload : public UCorvaneTransfer
{
	GENERATED_BODY()

protected:
	/** Says what is sent, before Activate. */
	void Prepare(const TSharedRef<FCorvaneUploadContent>& InContent, const FCorvaneUploadOptions& InOptions);
	/** Starts it for native code. */
	void Begin(FTell&& OnEnd, FTell&& OnMove);

	virtual FQueueWish GetQueueWish() const override;
	virtual TSharedPtr<FCorvaneTransferRun> MakeRun(FTell OnEnd, TFunction<void()> OnMove) override;

private:
	TSharedPtr<FCorvaneUploadContent> Content; // null before Prepare and from Activate on
	FString Address;
	FCorvaneUploadOptions Wishes;
};
