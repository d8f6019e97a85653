#pragma once

#include "Lua.h"
#include "Reflection.h"

namespace Script
{
	/** Pushes a Lua function that calls a reflected one: a table of input pins in, a table of output pins out. */
	void pushFunction(lua_State* lua, const Reflect::Function& function);

	/**
	 * Pushes a Lua function that calls one of an object: object:name{ pin = value }. It returns what the function returns, or a
	 * table when there are other outputs.
	 */
	void pushMethod(lua_State* lua, const Reflect::Function& method);
} // namespace Script
