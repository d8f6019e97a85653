#pragma once

#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"

/** Rings once, later; what is set anew takes the place of what waits. Thread: game thread. */
class FCorvaneAlarm
{
public:
	/**
	 * @param Seconds  0 = in the next frame.
	 * @param Ring  what it holds lives until it has rung, or is cleared.
	 */
	void Set(double Seconds, TFunction<void()> Ring)
	{
		Clear();
		Ticker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
														  [Ring = MoveTemp(Ring)](float)
														  {
															  Ring();
															  return false;
														  }),
			static_cast<float>(Seconds));
	}

	void Clear()
	{
		FTSTicker::RemoveTicker(Ticker);
		Ticker = FTSTicker::FDelegateHandle();
	}

private:
	FTSTicker::FDelegateHandle Ticker;
};
