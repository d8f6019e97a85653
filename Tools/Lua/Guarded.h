#pragma once

#include <lua.hpp>

#include <exception>

namespace NativeLua
{
	/**
	 * Wraps a native function for Lua: C++ errors become Lua errors with the place in the script. Lua's own errors are
	 * exceptions too and pass through.
	 */
	template <int (*Function)(lua_State*)>
	int guarded(lua_State* lua)
	{
		try
		{
			return Function(lua);
		}
		catch (const std::exception& error)
		{
			luaL_where(lua, 1);
			lua_pushstring(lua, error.what());
			lua_concat(lua, 2);
		}
		return lua_error(lua);
	}
} // namespace NativeLua
