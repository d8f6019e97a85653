#pragma once

#include "CoreMinimal.h"
#include "Upload/BodyStream.h"

/** What is uploaded, and where to. */
struct FCorvaneUploadContent
{
	FString URL;
	/** For options that name none. */
	FString Verb;
	FString ContentType;
	/** The headers may name no other type: the body is made for this one. */
	bool bFixedType = false;
	/** The body; of its files only the paths are known so far. */
	TArray<FCorvaneBodySegment> Segments;
	/** Why it cannot be sent, as a sentence; empty = nothing is known against it. */
	FString Fault;
};
