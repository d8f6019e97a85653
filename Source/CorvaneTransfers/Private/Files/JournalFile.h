#pragma once

#include "CoreMinimal.h"
#include "Files/Journal.h"
#include "Files/LineFile.h"

/** The journal of one download on disk. Thread: one at a time. */
class FCorvaneJournalFile : public FCorvaneLineFile
{
public:
	/** Opens or makes it, and reads what it tells. @return a failure also when another program has it open. */
	FCorvaneFileResult Open(const FString& InPath)
	{
		Journal = FCorvaneJournal();
		const auto Read = [this](const TArray<uint8>& Bytes)
		{
			Journal = FCorvaneJournal::Read(Bytes);
			return Journal.ValidBytes;
		};
		return FCorvaneLineFile::Open(InPath, Read);
	}
	/** @return what a journal tells that somebody else may have open; nothing when it cannot be read. */
	static FCorvaneJournal Peek(const FString& InPath) { return FCorvaneJournal::Read(ReadLines(InPath)); }

	/** What it told when it was opened. */
	const FCorvaneJournal& Told() const { return Journal; }

private:
	FCorvaneJournal Journal;
};
