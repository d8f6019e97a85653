#pragma once

#include "CoreMinimal.h"

/** What the HTTP layer under the module takes and what it ends the process for. */
namespace CorvaneHttpLayer
{
	/** @param upperVerb  one of the nine verbs. @return false when the layer would end the process. Thread: any. */
	bool sends(const FString& upperVerb);
} // namespace CorvaneHttpLayer
