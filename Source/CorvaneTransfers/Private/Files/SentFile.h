#pragma once

#include "CoreMinimal.h"
#include "Files/FileResult.h"
#include "Misc/DateTime.h"

/** A file that is to be sent, as it was found. It is only ever read. */
struct FCorvaneSentFile
{
	FString Path;
	/** In bytes. */
	int64 Size = 0;
	/** UTC, as exactly as the system tells it. */
	FDateTime ChangedAt = FDateTime::MinValue();

	/** Looks for a file and opens it for a moment. @return a failure when it cannot be read. Thread: any. */
	static FCorvaneFileResult Find(const FString& InPath, FCorvaneSentFile& File);

	/** Whether the file of that name still has the size and the time that it was found with. */
	bool IsUnchanged() const;
};
