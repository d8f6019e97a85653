#pragma once

#include "Containers/UnrealString.h"

#include <string>
#include <string_view>

/** Between the engine's UTF-16 and the bytes on the wire. What is malformed becomes U+FFFD. */
namespace Text
{
	std::string ToUtf8(const FString& Units);
	FString FromUtf8(std::string_view Bytes);

	/** Compares ASCII without regard to case. */
	bool EqualNoCase(std::string_view Left, std::string_view Right);
	bool StartsWithNoCase(std::string_view Whole, std::string_view Prefix);

	/** Whether a byte is a letter, a digit or one of -_.~ of ASCII. */
	bool IsUnreserved(uint8 Byte);

	/** Cuts blanks and tabs off both ends. */
	std::string_view Trim(std::string_view Whole);
} // namespace Text
