#include "Context.h"

#include <fmt/format.h>

namespace Script
{
	void Context::fail(const std::string& message)
	{
		if (!hasEnded())
		{
			error = message.empty() ? "error without a message" : message;
		}
	}

	std::string placeOfCall(lua_State* lua, const std::string& function)
	{
		luaL_where(lua, 1);
		const std::string_view where = lua_tostring(lua, -1); // "script.lua:7: ", or nothing
		const std::string place = where.empty() ? function : fmt::format("{} at {}", function, where.substr(0, where.rfind(':')));
		lua_pop(lua, 1);
		return place;
	}

	int addTraceback(lua_State* lua)
	{
		const char* message = luaL_tolstring(lua, 1, nullptr);
		luaL_traceback(lua, lua, message, 1);
		return 1;
	}
} // namespace Script
