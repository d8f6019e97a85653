#include "Json.h"

#include "InputError.h"
#include "JsonDecoding.h"
#include "JsonEncoding.h"
#include "JsonMarks.h"

#include <string>

namespace Script
{
	namespace
	{
		int encode(lua_State* lua)
		{
			luaL_checkany(lua, 1);
			lua_settop(lua, 1);
			try
			{
				const std::string text = encodeJson(lua, 1);
				lua_pushlstring(lua, text.data(), text.size());
			}
			catch (const Reflect::InputError& error)
			{
				throw error.inside("json.encode");
			}
			return 1;
		}

		int decode(lua_State* lua)
		{
			size_t size = 0;
			const char* const text = luaL_checklstring(lua, 1, &size);
			lua_settop(lua, 1);
			try
			{
				decodeJson(lua, {text, size});
			}
			catch (const Reflect::InputError& error)
			{
				throw error.inside("json.decode");
			}
			return 1;
		}

		int array(lua_State* lua)
		{
			luaL_checktype(lua, 1, LUA_TTABLE);
			lua_settop(lua, 1);
			markJsonArray(lua);
			return 1;
		}
	} // namespace

	void openJson(lua_State* lua)
	{
		static constexpr luaL_Reg functions[] = {
			{"encode", guarded<encode>}, {"decode", guarded<decode>}, {"array", guarded<array>}, {nullptr, nullptr}};
		luaL_newlib(lua, functions);
		pushJsonNull(lua);
		lua_setfield(lua, -2, "null");
		lua_setglobal(lua, "json");
	}
} // namespace Script
