#pragma once

#include "CoreMinimal.h"

/** SHA-256 of bytes that come in pieces. Final is the last call. Thread: one at a time. */
class FCorvaneSha256
{
public:
	static constexpr int32 DigestSize = 32;

	void Update(const uint8* Bytes, int64 Count);
	/** @param Digest  takes DigestSize bytes. */
	void Final(uint8* Digest);

private:
	static constexpr int32 BlockSize = 64;

	void Fill(const uint8*& Bytes, int64& Count);
	void TakeBlocks(const uint8* Blocks, int64 Number);

	uint32 State[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
	uint8 Pending[BlockSize] = {};
	int32 NumPending = 0;
	uint64 Length = 0;
};
