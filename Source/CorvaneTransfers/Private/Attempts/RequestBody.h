#pragma once

#include "CoreMinimal.h"
#include "Serialization/Archive.h"

/** The body of a request, which the HTTP module reads on its own thread, from the first byte to the last, at most once. */
class FCorvaneRequestBody : public FArchive
{
public:
	/** @return bytes that the HTTP module has taken so far; they may have reached the server. Thread: any. */
	virtual int64 GetHandedOut() const = 0;
};
