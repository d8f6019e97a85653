#pragma once

#include "CoreMinimal.h"

/**
 * The right of one transfer to a target, against the others of this program: what holds the files open stands against other
 * programs. Ends with its object. Thread: any.
 */
class FCorvaneTargetClaim
{
public:
	FCorvaneTargetClaim() = default;
	~FCorvaneTargetClaim() { Release(); }
	FCorvaneTargetClaim(const FCorvaneTargetClaim&) = delete;
	FCorvaneTargetClaim& operator=(const FCorvaneTargetClaim&) = delete;

	/** @param InTarget  a full path, compared as the file system does. @return false when another claim has it. */
	bool Take(const FString& InTarget);
	void Release();

private:
	FString Target; // empty = none
};
