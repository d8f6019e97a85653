#include "JsonMarks.h"

#include "UserData.h"

namespace Script
{
	namespace
	{
		struct JsonNull
		{
		};

		constexpr const char* nullName = "json null"; // registry: the one value
		constexpr const char* arrayName = "json array"; // registry: the metatable
	} // namespace

	template <>
	const char* const UserData<JsonNull>::typeName = "json.null";

	namespace
	{
		int describeNull(lua_State* lua)
		{
			lua_pushliteral(lua, "null");
			return 1;
		}
	} // namespace

	void pushJsonNull(lua_State* lua)
	{
		static constexpr luaL_Reg methods[] = {{"__tostring", describeNull}, {nullptr, nullptr}};
		if (lua_getfield(lua, LUA_REGISTRYINDEX, nullName) == LUA_TNIL)
		{
			lua_pop(lua, 1);
			UserData<JsonNull>::push(lua, methods, {});
			lua_pushvalue(lua, -1);
			lua_setfield(lua, LUA_REGISTRYINDEX, nullName);
		}
	}

	bool isJsonNull(lua_State* lua, int index)
	{
		return UserData<JsonNull>::test(lua, index) != nullptr;
	}

	void markJsonArray(lua_State* lua)
	{
		luaL_newmetatable(lua, arrayName);
		lua_setmetatable(lua, -2);
	}

	bool isMarkedAsJsonArray(lua_State* lua, int index)
	{
		if (!lua_getmetatable(lua, index))
		{
			return false;
		}
		luaL_getmetatable(lua, arrayName);
		const bool isSame = lua_rawequal(lua, -1, -2);
		lua_pop(lua, 2);
		return isSame;
	}
} // namespace Script
