#pragma once

#include "CoreMinimal.h"
#include "Kismet/BlueprintAsyncActionBase.h"

#include "UAsyncNodeCorv.generated.h"

/** Where a latent node stands; the library keeps count. */
enum class ECorvNodeWait : uint8
{
	NotWaiting,
	/** It has an ID, and no request of that ID has begun. */
	Registered,
	/** A request has begun whose result it gets, even when a later node takes over the ID. */
	HasRequest
};

/**
 * Base of the latent nodes: what the library hands a finished request to when a node waits for its ID. Thread: game thread.
 */
UCLASS()
class CORVANE_API UAsyncNodeCorv : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()

public:
	/**
	 * Takes the result of the request that this node waits for. This class ignores it.
	 * @param dataString  the body as text.
	 * @param dataArray  the body's lines, cut at CR LF, empty ones dropped.
	 * @param header  the response headers, each "Name: value".
	 * @param statusCode  the server's, or 400 (refused) or 500 (no response) of the system itself.
	 * @param byteData  the body's bytes.
	 * @param requestID  the ID that the request was built with.
	 */
	virtual void httpRequestComplete(FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
		const TArray<uint8>& byteData, FString requestID);

	ECorvNodeWait waitState = ECorvNodeWait::NotWaiting;
};
