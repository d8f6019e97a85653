#pragma once

#include "Lua.h"

#include <string_view>

namespace Script
{
	/** Pushes the value that a JSON text stands for. Throws InputError, which names line and column, for anything else. */
	void decodeJson(lua_State* lua, std::string_view text);
} // namespace Script
