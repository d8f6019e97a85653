#pragma once

#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "CorvaneTransfer.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneUploadResumable.generated.h"

/**
 * Uploads a file to a server of resumable uploads (tus 1.0.0), piece by piece, over drops, time limits and restarts of the
 * program: the server is asked how far it is, and gets the rest. The file is only read; notes of the upload stand in the
 * project's saved folder until it is through. A file that changes on the way ends with CannotRead. Thread: game thread.
 */
UCLASS()
class CORVANETRANSFERS_API UCorvaneUploadResumable : public UCorvaneTransfer
{
	GENERATED_BODY()

public:
	/**
	 * Makes a node that uploads a file in a way that can go on.
	 * @param URL  where uploads are begun, http or https; a user and a password in it are sent, and never shown.
	 * @param FilePath  of the file, which is only read.
	 * @param Options  how; what is not set has a value that suits most files.
	 * @return the upload itself, to pause or cancel it.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Options", DisplayName = "Upload File (resumable)"))
	static UCorvaneUploadResumable* UploadResumable(const FString& URL, const FString& FilePath, const FCorvaneResumableOptions& Options);

	/**
	 * Starts an upload from native code.
	 * @param OnEnd  is called once, later, with the outcome.
	 * @param OnMove  may be unset; is called ten times a second at most while bytes move.
	 * @return the transfer, which is held until its outcome.
	 */
	static UCorvaneUploadResumable* Start(
		const FString& URL, const FString& FilePath, const FCorvaneResumableOptions& Options, FTell OnEnd, FTell OnMove = FTell());

protected:
	virtual FQueueWish GetQueueWish() const override;
	virtual TSharedPtr<FCorvaneTransferRun> MakeRun(FTell OnEnd, TFunction<void()> OnMove) override;

private:
	FString Address;
	FString Path;
	FCorvaneResumableOptions Wishes;
};
