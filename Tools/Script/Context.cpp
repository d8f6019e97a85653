#include "Context.h"

namespace Script
{
	void Context::fail(const std::string& message)
	{
		if (!hasEnded())
		{
			error = message.empty() ? "error without a message" : message;
		}
	}

	int addTraceback(lua_State* lua)
	{
		const char* message = luaL_tolstring(lua, 1, nullptr);
		luaL_traceback(lua, lua, message, 1);
		return 1;
	}
} // namespace Script
