#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;

/** One UTF-16 unit, which is another type on Windows than elsewhere, as in the engine. */
#if defined(_WIN32)
using TCHAR = wchar_t;
	#define TEXT_PASTE(x) L##x
#else
using TCHAR = char16_t;
	#define TEXT_PASTE(x) u##x
#endif
using ANSICHAR = char;
/** One byte of UTF-8. */
enum UTF8CHAR : uint8
{
};

#define TEXT(x) TEXT_PASTE(x)

enum
{
	INDEX_NONE = -1
};

constexpr int32 MAX_int32 = INT32_MAX;
using SIZE_T = size_t;
constexpr int64 MAX_int64 = INT64_MAX;
constexpr uint32 MAX_uint32 = UINT32_MAX;

/** Ends the program with the place of the fault: for faults of the program itself, never for bad input. */
#define HOST_CHECK(expression) \
	do \
	{ \
		if (!(expression)) \
		{ \
			std::fprintf(stderr, "%s(%d): assertion failed: %s\n", __FILE__, __LINE__, #expression); \
			std::abort(); \
		} \
	} while (false)
