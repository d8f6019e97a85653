#pragma once

#include "CoreTypes.h"

#include <string>
#include <string_view>

/** UTF-16 to UTF-8; a lone surrogate becomes U+FFFD. Get() is zero-terminated and lives as long as this object. */
class FTCHARToUTF8
{
public:
	explicit FTCHARToUTF8(const TCHAR* Units)
		: FTCHARToUTF8(std::basic_string_view<TCHAR>(Units))
	{
	}
	FTCHARToUTF8(const TCHAR* Units, int32 Number)
		: FTCHARToUTF8(std::basic_string_view<TCHAR>(Units, static_cast<size_t>(Number)))
	{
	}

	const ANSICHAR* Get() const { return Bytes.c_str(); }
	/** Bytes, without the terminator. */
	int32 Length() const { return static_cast<int32>(Bytes.size()); }

private:
	explicit FTCHARToUTF8(std::basic_string_view<TCHAR> Units);

	std::string Bytes;
};

/** UTF-8 to UTF-16; each byte that is no part of a well-formed character becomes U+FFFD. */
class FUTF8ToTCHAR
{
public:
	FUTF8ToTCHAR(const ANSICHAR* Bytes, int32 Number)
		: FUTF8ToTCHAR(std::string_view(Bytes, static_cast<size_t>(Number)))
	{
	}

	const TCHAR* Get() const { return Units.c_str(); }
	/** Units, without the terminator. */
	int32 Length() const { return static_cast<int32>(Units.size()); }

private:
	explicit FUTF8ToTCHAR(std::string_view Bytes);

	std::basic_string<TCHAR> Units;
};
