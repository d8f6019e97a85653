#pragma once

#include "Containers/Array.h"
#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"

#include <string>
#include <string_view>

/** Text of the host as a test compares it. */
inline std::string utf8(const FString& Text)
{
	const FTCHARToUTF8 Bytes(*Text, Text.Len());
	return std::string(Bytes.Get(), static_cast<size_t>(Bytes.Length()));
}

inline FString text(std::string_view Utf8)
{
	const FUTF8ToTCHAR Units(Utf8.data(), static_cast<int32>(Utf8.size()));
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}

/** What the HTTP layer puts in front of a program's own headers, after the request line. */
inline std::string firstHeaders(const std::string& authority)
{
	return "Host: " + authority + "\r\nAccept: */*\r\nAccept-Encoding: deflate, gzip, br, zstd\r\n";
}

inline std::string bytesOf(const TArray<uint8>& Array)
{
	return std::string(Array.begin(), Array.end());
}
