#pragma once

#include "Lua.h"

#include <memory>
#include <new>
#include <utility>

namespace Script
{
	/** C++ values of one type inside Lua; Lua's collector destroys them. */
	template <class T>
	struct UserData
	{
		static_assert(alignof(T) <= alignof(void*), "Lua's memory is aligned to pointers only");

		/** What error messages call the type; unique among user data. */
		static const char* const typeName;

		/**
		 * Moves a value into a new user datum and pushes it.
		 * @param methods  the metatable's entries; without __index, the metatable itself is looked up.
		 */
		static T& push(lua_State* lua, const luaL_Reg* methods, T value)
		{
			void* const memory = lua_newuserdatauv(lua, sizeof(T), 0);
			T* const stored = ::new (memory) T(std::move(value)); // nothing may fail until the metatable with __gc is set
			if (luaL_getmetatable(lua, typeName) == LUA_TNIL)
			{
				lua_pop(lua, 1);
				makeMetatable(lua, methods);
			}
			lua_setmetatable(lua, -2);
			return *stored;
		}

		/** @return the value at an index, or null when it is something else. */
		static T* test(lua_State* lua, int index) { return static_cast<T*>(luaL_testudata(lua, index, typeName)); }
		/** The same; raises Lua's argument error when it is something else. */
		static T& check(lua_State* lua, int index) { return *static_cast<T*>(luaL_checkudata(lua, index, typeName)); }

	private:
		static int destroy(lua_State* lua)
		{
			std::destroy_at(static_cast<T*>(lua_touserdata(lua, 1)));
			return 0;
		}

		static void makeMetatable(lua_State* lua, const luaL_Reg* methods)
		{
			luaL_newmetatable(lua, typeName);
			lua_pushvalue(lua, -1);
			lua_setfield(lua, -2, "__index");
			luaL_setfuncs(lua, methods, 0);
			lua_pushcfunction(lua, destroy);
			lua_setfield(lua, -2, "__gc");
			lua_pushboolean(lua, 0);
			lua_setfield(lua, -2, "__metatable"); // scripts cannot take the metatable and call __gc themselves
		}
	};
} // namespace Script
