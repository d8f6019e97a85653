#pragma once

#include "CoreMinimal.h"
#include "Files/Sha256.h"
#include "Misc/SecureHash.h"

enum class ECorvaneHashKind : uint8
{
	None,
	Md5,
	Sha1,
	Sha256
};

/** Which hash of a file is wanted, and what it is expected to be. */
struct FCorvaneHashWish
{
	ECorvaneHashKind Kind = ECorvaneHashKind::None;
	/** Lower case hexadecimal; empty when the hash is only to be told. */
	FString Expected;

	/**
	 * Reads "sha256:HEX", "sha1:HEX" or "md5:HEX", or the name alone for a hash that is only told; case does not matter.
	 * @param Text  empty: no hash is wanted.
	 * @return false when it is none of these, or HEX is not as long as that hash is.
	 */
	static bool Parse(const FString& Text, FCorvaneHashWish& Wish);
};

/** A hash of bytes that come in pieces, of whichever kind. Thread: one at a time. */
class FCorvaneFileHash
{
public:
	explicit FCorvaneFileHash(ECorvaneHashKind InKind)
		: Kind(InKind)
	{
	}

	void Update(const uint8* Bytes, int64 Count);
	/** The last call. @return lower case hexadecimal; empty for the kind None. */
	FString Final();

private:
	const ECorvaneHashKind Kind;
	FMD5 Md5;
	FSHA1 Sha1;
	FCorvaneSha256 Sha256;
};

/** @return the SHA-256 of some bytes, in lower case hexadecimal. */
FString CorvaneSha256Of(const uint8* Bytes, int64 Count);
