#pragma once

#include "Containers/ArrayView.h"
#include "Containers/UnrealString.h"

/** Whole files at once. Thread: any. */
struct FFileHelper
{
	/** @return false when the file cannot be read or has more bytes than an array can hold; Result is then not touched. */
	static bool LoadFileToArray(TArray<uint8>& Result, const TCHAR* Filename, uint32 Flags = 0);

	/**
	 * Reads text: UTF-16 of either byte order or UTF-8, as the file's mark says; UTF-8 when there is none.
	 * @return as LoadFileToArray.
	 */
	static bool LoadFileToString(FString& Result, const TCHAR* Filename);

	/** Replaces or makes a file, and makes missing directories. @return whether every byte was written. */
	static bool SaveArrayToFile(TArrayView<const uint8> Array, const TCHAR* Filename);
	/** The same with text: ASCII as it is, anything else in UTF-16 with the low byte first, after a mark. */
	static bool SaveStringToFile(FStringView String, const TCHAR* Filename);
};
