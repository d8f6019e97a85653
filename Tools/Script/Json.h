#pragma once

#include "Lua.h"

namespace Script
{
	/** Sets the global table json: encode, decode, array, null. */
	void openJson(lua_State* lua);
} // namespace Script
