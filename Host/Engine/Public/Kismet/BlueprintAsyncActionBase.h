#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"

#include "BlueprintAsyncActionBase.generated.h"

/**
 * Base of latent nodes: a static factory makes the node, the caller binds its events, then activates it.
 * Thread: game thread.
 */
UCLASS(Abstract)
class UBlueprintAsyncActionBase : public UObject
{
	GENERATED_BODY()

public:
	/** Starts the node's work; called once, after its events were bound. */
	virtual void Activate() {}
};
