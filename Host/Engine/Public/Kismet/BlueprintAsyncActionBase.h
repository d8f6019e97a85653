#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"

#include <functional>

#include "BlueprintAsyncActionBase.generated.h"

struct FAsyncActionHold;

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

	/** Says that the node has ended: whoever runs the graph lets go of it. Destroys nothing. */
	virtual void SetReadyToDestroy();

private:
	friend FAsyncActionHold;

	bool bReadyToDestroy = false;
	std::function<void()> OnReady; // empty = nobody holds the node
};
