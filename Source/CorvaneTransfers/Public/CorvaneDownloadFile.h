#pragma once

#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "CorvaneTransfer.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneDownloadFile.generated.h"

class FCorvaneRoute;

/**
 * Downloads to a file that ends up right, or says why not. Bytes go to "<file>.corvpart" with "<file>.corvjournal" beside it, in
 * bounded memory; the file itself is replaced when all is there, checked and flushed, so that at every moment the old file or
 * the new one is whole. What has arrived is kept, also through a crash, and the same download goes on with it.
 * Thread: game thread.
 */
UCLASS()
class CORVANETRANSFERS_API UCorvaneDownloadFile : public UCorvaneTransfer
{
	GENERATED_BODY()

public:
	/**
	 * Makes a node that downloads a file.
	 * @param URL  http or https; a user and a password in it are sent, and never shown.
	 * @param FilePath  where the file is to stand; missing folders are made.
	 * @param Options  how; what is not set has a value that suits most files.
	 * @return the download itself, to pause or cancel it.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Options", DisplayName = "Download File (whole or a reason)"))
	static UCorvaneDownloadFile* DownloadFile(const FString& URL, const FString& FilePath, const FCorvaneDownloadOptions& Options);

	/**
	 * Starts a download from native code.
	 * @param OnEnd  is called once, later, with the outcome.
	 * @param OnMove  may be unset; is called ten times a second at most while bytes move.
	 * @return the transfer, which is held until its outcome.
	 */
	static UCorvaneDownloadFile* Start(
		const FString& URL, const FString& FilePath, const FCorvaneDownloadOptions& Options, FTell OnEnd, FTell OnMove = FTell());

	/**
	 * Makes a node that downloads a file of the Drive service, through the page that asks for a confirmation. A page never
	 * becomes the file: it ends with QuotaReached, NotPermitted or ServerError.
	 * @param FileID  of the shared file, as it stands in its link.
	 * @param FilePath  where the file is to stand; missing folders are made.
	 * @param Options  what may be set, each with a default that suits most.
	 * @return the node, which begins when it is activated, as a graph does at once.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Options", DisplayName = "Download Drive File (whole or a reason)"))
	static UCorvaneDownloadFile* DownloadDriveFile(const FString& FileID, const FString& FilePath, const FCorvaneDownloadOptions& Options);

	/** Starts a download of the Drive service from native code: as Start. */
	static UCorvaneDownloadFile* StartDriveFile(
		const FString& FileID, const FString& FilePath, const FCorvaneDownloadOptions& Options, FTell OnEnd, FTell OnMove = FTell());

	/**
	 * Starts a download that an earlier run began; it tells by its events alone.
	 * @param Address  as its journal has it; one of the Drive service is known for it.
	 * @param FilePath  its target.
	 * @param Options  their Queue, too.
	 * @return the transfer, which is held until its outcome.
	 */
	static UCorvaneDownloadFile* Resume(const FString& Address, const FString& FilePath, const FCorvaneDownloadOptions& Options);

protected:
	virtual FQueueWish GetQueueWish() const override;
	virtual TSharedPtr<FCorvaneTransferRun> MakeRun(FTell OnEnd, TFunction<void()> OnMove) override;

private:
	static UCorvaneDownloadFile* Begin(UCorvaneDownloadFile* Node, FTell&& OnEnd, FTell&& OnMove);

	TSharedPtr<FCorvaneRoute> Route; // until it is activated
	FString Address;
	FString Path;
	FCorvaneDownloadOptions Wishes;
};
