#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/**
 * A new file takes the place of a target. Where the system moves onto existing files, that is one step, and each moment shows
 * one of the two. Elsewhere the old one stands aside for a moment, as "<target>.corvold". Thread: any.
 */
namespace CorvaneTargetReplacement
{
	/**
	 * @param TellJournal  is called before the old file stands aside: Heal must be asked for if the power goes then. False stops.
	 * @return false when it failed; both files are where they were then.
	 */
	bool Replace(const FString& Target, const FString& NewFile, const TFunction<bool()>& TellJournal);

	/** Brings an old file that stands aside back, or deletes it when the new one is there. Only after a Replace that was cut short. */
	void Heal(const FString& Target);
} // namespace CorvaneTargetReplacement
