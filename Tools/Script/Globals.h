#pragma once

#include "Lua.h"

namespace Script
{
	/** Sets one global table per class with script functions, and one per enumeration, name to value. */
	void openGlobals(lua_State* lua);
} // namespace Script
