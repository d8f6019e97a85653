#pragma once

#include "CoreMinimal.h"
#include "Pace/SharedPace.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

/** One transfer's turns with a pace that it shares, if it shares one: each part asks before it moves. Thread: game thread. */
class FCorvanePaceTurn
{
public:
	void Share(const TSharedRef<FCorvaneSharedPace>& InPace) { Pace = InPace; }

	/** @return bytes that the next part should have at most; 0 = any number. */
	int64 PartBytes() const;

	/** Takes the turn at once if there is no limit. @return whether it did. */
	bool TakeIfUnlimited();
	/**
	 * Waits for the turn of a part.
	 * @param MostBytes  that it may have.
	 * @param Go  is called when it may move, maybe inside this call; holds what holds this object.
	 */
	void Ask(int64 MostBytes, TFunction<void()> Go);
	/** Lets a part that waits go at once: it will not move anything. */
	void Withdraw();
	/** No byte of the part moves any more. Harmless when none has. */
	void Settle();

	/** @return of the part that moves; null = no limit is shared. */
	const TSharedPtr<FCorvanePaceShare>& GetShare() const { return Moving; }

private:
	void Take(const TSharedRef<FCorvanePaceShare>& Given);

	TSharedPtr<FCorvaneSharedPace> Pace;
	TSharedPtr<FCorvanePaceShare> Moving;
	int64 Number = 0; // with which it waits
	double Began = 0;
	double SecondsOfLast = 0;
};
