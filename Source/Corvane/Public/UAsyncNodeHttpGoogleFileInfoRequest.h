#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "UAsyncNodeCorv.h"

#include "UAsyncNodeHttpGoogleFileInfoRequest.generated.h"

/** Information of a Drive file, as onhttpRequestCompleteGoogleInfoDelegate tells it. */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(FAsyncNodeGoogleInfoRequestCompleteDelegate, const FString, fileName, int64, fileSizeInBytes,
	int32, statusCode, const FString, downloadID, const FString, requestID);

/**
 * Latent node that asks for the name and the size of a Drive file. It is used and held like a UAsyncNodeHttpDownloadUpload;
 * its request ID is always a new GUID. Thread: game thread.
 */
UCLASS()
class CORVANE_API UAsyncNodeHttpGoogleFileInfoRequest : public UAsyncNodeCorv
{
	GENERATED_BODY()

public:
	/** The information was read: any status below 400. The pins are those of onhttpRequestCompleteGoogleInfoDelegate. */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeGoogleInfoRequestCompleteDelegate OnSuccess;

	/**
	 * Any other status: the server's from 400 on, 452 when the page cannot be read, or 500 (no response, or cancelled) of the
	 * system itself. The pins are those of OnSuccess. An empty downloadID has ended the node before anybody listens: nothing is
	 * raised here, onhttpRequestCompleteGoogleInfoDelegate tells with status 400.
	 */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeGoogleInfoRequestCompleteDelegate OnFail;

	/** Under which the node waits for its result; cancelRequest takes it. */
	FString requestID;
	/** What Activate starts; empty once it has, and when the builder refused. */
	TArray<FhttpRequest> httpRequests;

	/** Makes a node that asks for name and size of a Drive file. The pins are those of CreateHttpRequestGoogleDriveFileInfo. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET", meta = (BlueprintInternalUseOnly = "true", ToolTip = ""))
	static UAsyncNodeHttpGoogleFileInfoRequest* AsyncExecuteHTTP_GoogleFileInfo_REQUEST(FString downloadID);

	virtual void Activate() override;

	/**
	 * Raises OnSuccess for a status below 400, also for 0, else OnFail, then gives up the ID and ends the node.
	 * @param fileSizeInBytes  0 = unknown.
	 * @param downloadID  names the file.
	 */
	void httpRequestCompleteGoogleFileInfo(
		FString fileName, int64 fileSizeInBytes, int32 statusCode, FString downloadID, FString requestID);
};
