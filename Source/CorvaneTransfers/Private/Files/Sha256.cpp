#include "Files/Sha256.h"

#include "HAL/UnrealMemory.h"

namespace CorvaneSha256
{
	/** The first 32 bits of the fractions of the cube roots of the first 64 primes. */
	static constexpr uint32 Constants[64] = {0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
		0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174, 0xe49b69c1, 0xefbe4786, 0x0fc19dc6,
		0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da, 0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147,
		0x06ca6351, 0x14292967, 0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85, 0xa2bfe8a1,
		0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070, 0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5,
		0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3, 0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7,
		0xc67178f2};

	static inline uint32 Rotated(uint32 Word, int32 Bits)
	{
		return Word >> Bits | Word << (32 - Bits);
	}

	/** One round: instead of moving the eight words on, the caller names them one place further. */
	static inline void Round(uint32 A, uint32 B, uint32 C, uint32& D, uint32 E, uint32 F, uint32 G, uint32& H, uint32 ConstantAndWord)
	{
		const uint32 Mixed = H + (Rotated(E, 6) ^ Rotated(E, 11) ^ Rotated(E, 25)) + (G ^ (E & (F ^ G))) + ConstantAndWord;
		D += Mixed;
		H = Mixed + (Rotated(A, 2) ^ Rotated(A, 13) ^ Rotated(A, 22)) + ((A & B) | (C & (A | B)));
	}

	static uint32 WordAt(const uint8* Bytes)
	{
		return static_cast<uint32>(Bytes[0]) << 24 | static_cast<uint32>(Bytes[1]) << 16 | static_cast<uint32>(Bytes[2]) << 8 | Bytes[3];
	}

	/** A block's own 16 words, and 48 more that are mixed from them. */
	static void FillWords(const uint8* Block, uint32 (&Words)[64])
	{
		for (int32 Index = 0; Index < 16; ++Index)
		{
			Words[Index] = WordAt(Block + 4 * Index);
		}
		for (int32 Index = 16; Index < 64; ++Index)
		{
			const uint32 Near = Words[Index - 2];
			const uint32 Far = Words[Index - 15];
			Words[Index] = (Rotated(Near, 17) ^ Rotated(Near, 19) ^ Near >> 10) + Words[Index - 7] +
						   (Rotated(Far, 7) ^ Rotated(Far, 18) ^ Far >> 3) + Words[Index - 16];
		}
	}

	static void TakeBlock(uint32 (&State)[8], const uint8* Block)
	{
		uint32 Words[64];
		FillWords(Block, Words);
		uint32 A = State[0], B = State[1], C = State[2], D = State[3], E = State[4], F = State[5], G = State[6], H = State[7];
		for (int32 Index = 0; Index < 64; Index += 8)
		{
			Round(A, B, C, D, E, F, G, H, Constants[Index] + Words[Index]);
			Round(H, A, B, C, D, E, F, G, Constants[Index + 1] + Words[Index + 1]);
			Round(G, H, A, B, C, D, E, F, Constants[Index + 2] + Words[Index + 2]);
			Round(F, G, H, A, B, C, D, E, Constants[Index + 3] + Words[Index + 3]);
			Round(E, F, G, H, A, B, C, D, Constants[Index + 4] + Words[Index + 4]);
			Round(D, E, F, G, H, A, B, C, Constants[Index + 5] + Words[Index + 5]);
			Round(C, D, E, F, G, H, A, B, Constants[Index + 6] + Words[Index + 6]);
			Round(B, C, D, E, F, G, H, A, Constants[Index + 7] + Words[Index + 7]);
		}
		const uint32 Mixed[8] = {A, B, C, D, E, F, G, H};
		for (int32 Index = 0; Index < 8; ++Index)
		{
			State[Index] += Mixed[Index];
		}
	}
} // namespace CorvaneSha256

void FCorvaneSha256::Update(const uint8* Bytes, int64 Count)
{
	Length += static_cast<uint64>(Count);
	if (NumPending > 0)
	{
		Fill(Bytes, Count);
	}
	if (NumPending == 0)
	{
		TakeBlocks(Bytes, Count / BlockSize);
		Bytes += Count - Count % BlockSize;
		Count %= BlockSize;
		Fill(Bytes, Count);
	}
}

/** Takes bytes into the block that is not full, as far as they go, and the block when it is. */
void FCorvaneSha256::Fill(const uint8*& Bytes, int64& Count)
{
	if (Count == 0)
	{
		return; // there may be no bytes to point to
	}
	const int32 Number = static_cast<int32>(FMath::Min<int64>(Count, BlockSize - NumPending));
	FMemory::Memcpy(Pending + NumPending, Bytes, static_cast<SIZE_T>(Number));
	NumPending += Number;
	Bytes += Number;
	Count -= Number;
	if (NumPending == BlockSize)
	{
		TakeBlocks(Pending, 1);
		NumPending = 0;
	}
}

void FCorvaneSha256::TakeBlocks(const uint8* Blocks, int64 Number)
{
	for (; Number > 0; --Number, Blocks += BlockSize)
	{
		CorvaneSha256::TakeBlock(State, Blocks);
	}
}

void FCorvaneSha256::Final(uint8* Digest)
{
	uint8 Tail[2 * BlockSize] = {0x80}; // a one, zeros up to eight bytes before a block's end, and the length in bits
	const uint64 Bits = Length * 8;
	const int32 ZerosEnd = NumPending < BlockSize - 8 ? BlockSize - 8 - NumPending : 2 * BlockSize - 8 - NumPending;
	for (int32 Index = 0; Index < 8; ++Index)
	{
		Tail[ZerosEnd + Index] = static_cast<uint8>(Bits >> (56 - 8 * Index));
	}
	Update(Tail, ZerosEnd + 8);
	for (int32 Index = 0; Index < DigestSize; ++Index)
	{
		Digest[Index] = static_cast<uint8>(State[Index / 4] >> (24 - 8 * (Index % 4)));
	}
}
