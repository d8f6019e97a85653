#pragma once

#include "Containers/StringConv.h"

#include <filesystem>

/** @return a name as the system takes it: UTF-8, up to the first zero. */
inline std::filesystem::path toNativePath(const TCHAR* Name)
{
	return FTCHARToUTF8(Name).Get();
}
