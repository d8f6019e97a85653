#include "Print.h"

#include "Context.h"

namespace Script
{
	namespace
	{
		int print(lua_State* lua)
		{
			const int count = lua_gettop(lua);
			std::string line;
			for (int index = 1; index <= count; ++index)
			{
				size_t size = 0;
				const char* const text = luaL_tolstring(lua, index, &size);
				line.append(index > 1 ? "\t" : "").append(text, size);
				lua_pop(lua, 1);
			}
			Context::of(lua).program.print(line);
			return 0;
		}
	} // namespace

	void openPrint(lua_State* lua)
	{
		lua_register(lua, "print", guarded<print>);
	}
} // namespace Script
