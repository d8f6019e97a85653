#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransfer.h"
#include "CorvaneUploadOptions.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneUpload.generated.h"

class FCorvaneUploadRun;
struct FCorvaneUploadContent;

/**
 * An upload in one request. Files are read while they are sent, in bounded memory; none is changed, copied or loaded. Each
 * try begins at the first byte: Pause holds back the next try, since the protocol has no pause inside of one. Thread: game thread.
 */
UCLASS(Abstract, BlueprintType, meta = (ExposedAsyncProxy = "Transfer"))
class CORVANETRANSFERS_API UCorvaneUpload : public UCorvaneTransfer
{
	GENERATED_BODY()

public:
	virtual void Activate() override;
	virtual void Pause() override;
	virtual void Continue() override;
	virtual void Cancel() override;
	virtual FCorvaneTransferReport GetReport() const override;
	virtual bool IsPaused() const override;

protected:
	/** Says what is sent, before Activate. */
	void Prepare(const TSharedRef<FCorvaneUploadContent>& InContent, const FCorvaneUploadOptions& InOptions);
	/** Starts it for native code. */
	void Begin(FTell&& OnEnd, FTell&& OnMove);

private:
	void End(const FCorvaneTransferReport& Report);

	TSharedPtr<FCorvaneUploadContent> Content; // null before Prepare
	TSharedPtr<FCorvaneUploadRun> Run; // null before Activate
	FCorvaneUploadOptions Wishes;
};
