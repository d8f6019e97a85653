#pragma once

#include <functional>

class UBlueprintAsyncActionBase;

/**
 * The part of whoever runs a graph: a node that is under way is kept alive until it says that it has ended.
 * Thread: game thread.
 */
struct FAsyncActionHold
{
	/**
	 * @param OnReady  called once, when the node has ended.
	 * @return false when it has ended already; it is not to be held then.
	 */
	static bool Begin(UBlueprintAsyncActionBase& Action, std::function<void()> OnReady);
	/** Forgets what Begin was given. */
	static void End(UBlueprintAsyncActionBase& Action);
};
