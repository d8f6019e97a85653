#pragma once

#include "CoreMinimal.h"

namespace CorvaneRules
{
	/** @return an address as a log may show it: without user, password, query and fragment, in one line of bounded length. */
	FString shownAddress(const FString& url);
} // namespace CorvaneRules
