#include "Kismet/BlueprintAsyncActionBase.h"

#include "Host/AsyncActionHold.h"

#include <utility>

void UBlueprintAsyncActionBase::SetReadyToDestroy()
{
	bReadyToDestroy = true;
	if (const std::function<void()> Call = std::exchange(OnReady, nullptr))
	{
		Call();
	}
}

bool FAsyncActionHold::Begin(UBlueprintAsyncActionBase& Action, std::function<void()> OnReady)
{
	if (!Action.bReadyToDestroy)
	{
		Action.OnReady = std::move(OnReady);
	}
	return !Action.bReadyToDestroy;
}

void FAsyncActionHold::End(UBlueprintAsyncActionBase& Action)
{
	Action.OnReady = nullptr;
}
