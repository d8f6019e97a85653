#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"

#include "BlueprintFunctionLibrary.generated.h"

/** Base of classes whose static functions are script nodes. */
UCLASS(Abstract)
class UBlueprintFunctionLibrary : public UObject
{
	GENERATED_BODY()

public:
	explicit UBlueprintFunctionLibrary(const FObjectInitializer& ObjectInitializer = FObjectInitializer::Get())
		: UObject(ObjectInitializer)
	{
	}
};
