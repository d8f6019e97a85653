#pragma once

#include "Lua.h"
#include "Reflection.h"

namespace Script
{
	/** Pushes a Lua function that calls a reflected one: a table of input pins in, a table of output pins out. */
	void pushFunction(lua_State* lua, const Reflect::Function& function);
} // namespace Script
