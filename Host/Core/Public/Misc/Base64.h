#pragma once

#include "Containers/UnrealString.h"

/** Base64 with the standard alphabet of RFC 4648. Thread: any. */
struct FBase64
{
	/** @return the text, padded with "=" to a multiple of four. @param Length  1,610,612,733 bytes at most: a text holds no more. */
	static FString Encode(const uint8* Source, uint32 Length);
	static FString Encode(const TArray<uint8>& Source) { return Encode(Source.GetData(), static_cast<uint32>(Source.Num())); }

	/**
	 * Reads such a text. Padding may be missing; blanks and line ends may not stand inside.
	 * @return false when the text is damaged; OutDest is then of no use.
	 */
	static bool Decode(const FString& Source, TArray<uint8>& OutDest);
};
