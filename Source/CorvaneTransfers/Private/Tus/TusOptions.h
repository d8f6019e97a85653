#pragma once

#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "Files/FileHash.h"

/** What a resumable upload is started with, as it is read. Thread: any. */
struct FCorvaneTusWishes
{
	FCorvaneHashWish Hash;
	/** None = whatever the server offers. */
	ECorvaneHashKind PieceChecksum = ECorvaneHashKind::None;
	/** What is wrong, as a sentence; empty = nothing. */
	FString Fault;

	/** Looks at what is asked for, and at nothing else. */
	static FCorvaneTusWishes Read(const FString& URL, const FString& FilePath, const FCorvaneResumableOptions& Options);
};
