#include "Attempts/ByteScan.h"

#include "HAL/UnrealMemory.h"

namespace CorvaneByteScan
{
	static constexpr int64 Step = 8;
	static constexpr uint64 Ones = 0x0101010101010101;
	static constexpr uint64 Tops = 0x8080808080808080;

	static uint64 Load(const uint8* At)
	{
		uint64 Word;
		FMemory::Memcpy(&Word, At, Step);
		return Word;
	}

	/** @return 0 when no byte of the word is 0, else anything else. */
	static uint64 HasZero(uint64 Word)
	{
		return (Word - Ones) & ~Word & Tops;
	}
} // namespace CorvaneByteScan

const uint8* CorvaneByteScan::FindLineEnd(const uint8* At, const uint8* End)
{
	for (; End - At >= Step; At += Step)
	{
		const uint64 Word = Load(At);
		if ((HasZero(Word ^ (Ones * '\n')) | HasZero(Word ^ (Ones * '\r'))) != 0)
		{
			break;
		}
	}
	while (At != End && *At != '\n' && *At != '\r')
	{
		++At;
	}
	return At;
}

const uint8* CorvaneByteScan::Find(const uint8* At, const uint8* End, uint8 Wanted)
{
	while (End - At >= Step && HasZero(Load(At) ^ (Ones * Wanted)) == 0)
	{
		At += Step;
	}
	while (At != End && *At != Wanted)
	{
		++At;
	}
	return At;
}

const uint8* CorvaneByteScan::FindNonAscii(const uint8* At, const uint8* End)
{
	while (End - At >= Step && (Load(At) & Tops) == 0)
	{
		At += Step;
	}
	while (At != End && *At < 0x80)
	{
		++At;
	}
	return At;
}
