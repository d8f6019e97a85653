#pragma once

#include "Lua.h"

namespace Script
{
	/** JSON tells apart what Lua does not: null is a value of its own there, and an empty list is no empty object. */
	void pushJsonNull(lua_State* lua);
	bool isJsonNull(lua_State* lua, int index);

	/** Marks the table on top of the stack as a list. */
	void markJsonArray(lua_State* lua);
	bool isMarkedAsJsonArray(lua_State* lua, int index);

	/** How deep lists and objects may stand in each other. */
	constexpr int deepestJson = 500;
} // namespace Script
