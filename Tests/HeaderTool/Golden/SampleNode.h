#pragma once

#include "CoreMinimal.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "SampleTypes.h"

#include "SampleNode.generated.h"

UCLASS()
class USampleNode final : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()
public:
	UFUNCTION(BlueprintCallable, Category = "Sample", meta = (BlueprintInternalUseOnly = "true"))
	static USampleNode* start(FSampleRecord record);
};

/** Derives from a class of the same file. */
UCLASS(Abstract)
class USampleBase : public UObject
{
	GENERATED_BODY()
public:
	UFUNCTION()
	virtual void ping() {}
};

UCLASS()
class USampleDerived : public USampleBase
{
	GENERATED_BODY()
public:
	virtual void ping() override {}
};
