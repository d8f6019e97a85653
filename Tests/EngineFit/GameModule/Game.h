#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "FileFunctionsCorv.h"
#include "UAsyncNodeCorv.h"
#include "UObject/Object.h"

#include "Game.generated.h"

/** A game's module beside the plug-in: what native code may use must be found across the border between two libraries. */
UCLASS()
class UGameListener : public UObject
{
	GENERATED_BODY()

public:
	UFUNCTION()
	void ended(const FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
		const TArray<uint8>& byteData, const FString requestID);

	UFUNCTION()
	void fileEnded(const FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
		const FString requestID);

	UFUNCTION()
	void informed(const FString fileName, int64 fileSizeInBytes, int32 statusCode, const FString downloadID, const FString requestID);

	UFUNCTION()
	void downloads(float size, float megaBytesReceived, float percentDownload, float megaBit, const FString requestID);

	UFUNCTION()
	void uploads(float size, int32 bytesSent, float percentUpload, const FString requestID);

	UFUNCTION()
	void hears(const FString response, const FString requestID);
};

/** A latent node of the game's own. */
UCLASS()
class UGameNode : public UAsyncNodeCorv
{
	GENERATED_BODY()

public:
	virtual void httpRequestComplete(FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
		const TArray<uint8>& byteData, FString requestID) override;
};

UCLASS()
class UGameLibrary : public UCorvaneBPLibrary
{
	GENERATED_BODY()
};

UCLASS()
class UGameFiles : public UFileFunctionsCorv
{
	GENERATED_BODY()
};
