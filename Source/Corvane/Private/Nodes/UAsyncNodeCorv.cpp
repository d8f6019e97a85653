#include "UAsyncNodeCorv.h"

void UAsyncNodeCorv::httpRequestComplete(FString, const TArray<FString>&, const TArray<FString>&, int32, const TArray<uint8>&, FString) {}
