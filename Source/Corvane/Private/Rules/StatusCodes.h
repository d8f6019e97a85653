#pragma once

#include "CoreMinimal.h"

/** The status codes that the system itself gives, and those of servers that it goes by. */
namespace CorvaneStatus
{
	/** The request was not started. */
	constexpr int32 refused = 400;
	/** No answer came, or none that may pass for a success. */
	constexpr int32 noResponse = 500;
	/** The page of a Drive file was not understood. */
	constexpr int32 unreadablePage = 452;

	constexpr int32 partialContent = 206;
	constexpr int32 firstError = 400;

	/** @return whether a server has carried out what was asked of it. */
	constexpr bool isDone(int32 code)
	{
		return code >= 200 && code <= 299;
	}
} // namespace CorvaneStatus
