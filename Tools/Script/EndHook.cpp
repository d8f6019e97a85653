#include "EndHook.h"

#include "Context.h"

namespace Script
{
	namespace
	{
		constexpr int betweenLooks = 100; // instructions of Lua's machine; fewer looks would save nothing

		/** Returns count, too: a script shall not take a reading that was broken off for one that has come to the end. */
		constexpr int occasions = LUA_MASKCOUNT | LUA_MASKRET;

		void lookForEnd(lua_State* lua, lua_Debug*)
		{
			if (Context::of(lua).isToldToEnd())
			{
				lua_sethook(lua, lookForEnd, occasions, 1); // a script may catch this error, but get no further
				luaL_error(lua, "the program ends");
			}
		}
	} // namespace

	void openEndHook(lua_State* lua)
	{
		lua_sethook(lua, lookForEnd, occasions, betweenLooks);
	}
} // namespace Script
