#pragma once

#include "CoreMinimal.h"

/**
 * A new file takes the place of a target. Where the system moves onto existing files, that is one step, and each moment shows
 * one of the two. Elsewhere the old one stands aside for a moment, as "<target>.corvold". Thread: any.
 */
namespace CorvaneTargetReplacement
{
	/** @return false when it failed; both files are where they were then. */
	bool Replace(const FString& Target, const FString& NewFile);

	/** Brings an old file that stands aside back, or deletes it when the new one is there. Only after a Replace that was cut short. */
	void Heal(const FString& Target);
} // namespace CorvaneTargetReplacement
