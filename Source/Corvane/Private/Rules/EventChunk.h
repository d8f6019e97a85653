#pragma once

#include "CoreMinimal.h"

/** How a growing body is cut into server-sent events. */
namespace CorvaneRules
{
	/** The bytes read as UTF-8 up to the first zero. */
	FString eventChunkText(const uint8* bytes, int32 number);
} // namespace CorvaneRules
