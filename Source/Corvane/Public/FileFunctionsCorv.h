#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "Kismet/BlueprintFunctionLibrary.h"

#include "FileFunctionsCorv.generated.h"

/** File utilities for scripts: stateless, synchronous, on the calling thread. */
UCLASS(BlueprintType, Blueprintable)
class CORVANE_API UFileFunctionsCorv : public UBlueprintFunctionLibrary
{
	GENERATED_BODY()

public:
	/**
	 * The full path that a directory kind and a path stand for; every function that takes the two resolves them so.
	 * @param directoryType  E_gd: the path goes behind the project directory, without a separator of its own; E_ad: the
	 * path as given, a relative one starting at the engine's base directory.
	 * @param filePath  need not exist.
	 * @return the absolute path with forward slashes and without "." and ".." steps.
	 * @note Thread: any.
	 */
	UFUNCTION(BlueprintPure, Category = "Corvane|File")
	static FString getCleanDirectory(EFileFunctionsCorvDirectoryType directoryType, FString filePath);
};
