#pragma once

#include "CoreTypes.h"
#include "Delegates/Delegate.h"
#include "Templates/SharedPointer.h"

/** Seconds since the last frame; whether to be called again. */
using FTickerDelegate = TDelegate<bool(float)>;

/** Calls delegates on the game thread, each frame or at longer intervals. */
class FTSTicker
{
public:
	struct FElement;
	using FDelegateHandle = TWeakPtr<FElement, ESPMode::ThreadSafe>;

	static FTSTicker& GetCoreTicker();

	/**
	 * Calls a delegate again and again as long as it returns true.
	 * @param InDelay  seconds before each call; 0 = every frame.
	 * @note Thread: any.
	 */
	FDelegateHandle AddTicker(const FTickerDelegate& InDelegate, float InDelay = 0.0f);

	/** Harmless for one that has ended. It may be the one that is running. Thread: game thread. */
	static void RemoveTicker(FDelegateHandle Handle);
};
