#pragma once

#include "Lua.h"

#include <string>

namespace Script
{
	/** @param index  absolute. @return JSON in one line. Throws InputError, which names the place, for what JSON cannot hold. */
	std::string encodeJson(lua_State* lua, int index);
} // namespace Script
