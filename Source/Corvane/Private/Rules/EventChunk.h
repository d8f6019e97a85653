#pragma once

#include "CoreMinimal.h"

/** The part of a body that has not been delivered yet: bytes begin up to, not including, end. */
struct FCorvEventChunk
{
	int32 begin = 0;
	int32 end = 0;
};

/** How a growing body is cut into server-sent events. */
namespace CorvaneRules
{
	/**
	 * The next part to deliver.
	 * @param delivered  bytes delivered so far.
	 * @param bytesReceived  as the progress callback says; fewer than delivered means that the body began anew.
	 * @param contentBytes  bytes that can be read by now.
	 * @return empty when there is nothing new; its end is what counts as delivered from now on.
	 */
	FCorvEventChunk nextEventChunk(int32 delivered, uint64 bytesReceived, int32 contentBytes);

	/** The bytes read as UTF-8 up to the first zero. */
	FString eventChunkText(const uint8* bytes, int32 number);
} // namespace CorvaneRules
