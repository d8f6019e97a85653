#include "Attempts/Utf8Text.h"

#include "Attempts/ByteScan.h"

namespace CorvaneUtf8
{
	static constexpr uint32 Replacement = 0xFFFD;

	/** What may follow the first byte of a character. */
	struct FLead
	{
		int32 Followers = -1; // -1 = the byte begins no character
		uint32 Bits = 0;
		// Of the first follower: what is outside would be overlong, half of a pair, or beyond the last character.
		uint8 Least = 0x80;
		uint8 Most = 0xBF;
	};

	static FLead ReadLead(uint8 Byte)
	{
		if (Byte >= 0xC2 && Byte <= 0xDF)
		{
			return {1, Byte & 0x1Fu};
		}
		if (Byte >= 0xE0 && Byte <= 0xEF)
		{
			return {2, Byte & 0x0Fu, static_cast<uint8>(Byte == 0xE0 ? 0xA0 : 0x80), static_cast<uint8>(Byte == 0xED ? 0x9F : 0xBF)};
		}
		if (Byte >= 0xF0 && Byte <= 0xF4)
		{
			return {3, Byte & 0x07u, static_cast<uint8>(Byte == 0xF0 ? 0x90 : 0x80), static_cast<uint8>(Byte == 0xF4 ? 0x8F : 0xBF)};
		}
		return {};
	}

	/** Reads one character that is no ASCII, and moves behind it or behind what of it there is. */
	static uint32 ReadCharacter(const uint8*& At, const uint8* End)
	{
		FLead Lead = ReadLead(*At++);
		uint32 Character = Lead.Bits;
		for (int32 Left = Lead.Followers; Left > 0; --Left)
		{
			if (At == End || *At < Lead.Least || *At > Lead.Most)
			{
				return Replacement;
			}
			Character = (Character << 6) | (*At++ & 0x3Fu);
			Lead.Least = 0x80;
			Lead.Most = 0xBF;
		}
		return Lead.Followers < 0 ? Replacement : Character;
	}

	static TCHAR* WriteCharacter(TCHAR* Out, uint32 Character)
	{
		if (Character < 0x10000)
		{
			*Out++ = static_cast<TCHAR>(Character);
			return Out;
		}
		*Out++ = static_cast<TCHAR>(0xD800 + ((Character - 0x10000) >> 10));
		*Out++ = static_cast<TCHAR>(0xDC00 + ((Character - 0x10000) & 0x3FF));
		return Out;
	}
} // namespace CorvaneUtf8

FString CorvaneUtf8::Decode(const uint8* Bytes, int64 Number)
{
	if (Number == 0)
	{
		return FString();
	}
	TArray<TCHAR> Units;
	Units.SetNumUninitialized(static_cast<int32>(Number)); // no character has more units than bytes
	TCHAR* Out = Units.GetData();
	const uint8* const End = Bytes + Number;
	for (const uint8* At = Bytes; At != End;)
	{
		for (const uint8* const Plain = CorvaneByteScan::FindNonAscii(At, End); At != Plain; ++At)
		{
			*Out++ = static_cast<TCHAR>(*At);
		}
		if (At != End)
		{
			Out = WriteCharacter(Out, ReadCharacter(At, End));
		}
	}
	return FString::ConstructFromPtrSize(Units.GetData(), static_cast<int32>(Out - Units.GetData()));
}
