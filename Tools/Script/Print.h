#pragma once

#include "Lua.h"

namespace Script
{
	/** Makes the global print write through the program around the script. */
	void openPrint(lua_State* lua);
} // namespace Script
