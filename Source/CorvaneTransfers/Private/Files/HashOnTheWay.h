#pragma once

#include "CoreMinimal.h"
#include "Files/FileHash.h"
#include "Templates/UniquePtr.h"

/**
 * The hash of a file's bytes while they are written, so that the file need not be read for it. It knows which bytes it has seen:
 * only those from the first one on, each once, make a hash of a file. Thread: one at a time.
 */
class FCorvaneHashOnTheWay
{
public:
	explicit FCorvaneHashOnTheWay(ECorvaneHashKind InKind = ECorvaneHashKind::None)
		: Kind(InKind)
	{
	}

	/** The file is empty. */
	void Begin();
	/** @param Start  where in the file the bytes were written. */
	void Update(int64 Start, const uint8* Bytes, int64 Count);

	/** @return whether Final is the hash, of that kind, of a file of so many bytes. */
	bool Covers(ECorvaneHashKind WantedKind, int64 Length) const { return Hash.IsValid() && WantedKind == Kind && Hashed == Length; }
	/** The last call until the next Begin. @return lower case hexadecimal. */
	FString Final();

private:
	ECorvaneHashKind Kind;
	TUniquePtr<FCorvaneFileHash> Hash; // null when there is a gap
	int64 Hashed = 0;
};
