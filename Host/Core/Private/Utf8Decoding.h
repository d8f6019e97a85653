#pragma once

#include "CoreTypes.h"

#include <string>
#include <string_view>

/** Each byte that is no part of a well-formed character becomes U+FFFD. Thread: any. */
std::basic_string<TCHAR> utf16FromUtf8(std::string_view Bytes);
