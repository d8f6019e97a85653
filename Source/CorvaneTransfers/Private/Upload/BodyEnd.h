#pragma once

#include "CoreMinimal.h"
#include "Files/FileResult.h"

/** What came of a body, once nobody reads it any more. */
struct FCorvaneBodyEnd
{
	/** A failure when a file could not be read, changed, or has another hash than the expected one. */
	FCorvaneFileResult Result;
	/** Its last byte was handed out. */
	bool bWhole = false;
	/** Of the bytes out of files, one file after the other, if it was asked for and the body is whole; else empty. */
	FString Hash;
};
