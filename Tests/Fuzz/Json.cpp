// JSON that scripts get from servers: what is read is written as what is read again, or is refused with words.

#include "Fuzz.h"
#include "InputError.h"
#include "JsonDecoding.h"
#include "JsonEncoding.h"

#include <lua.hpp>
#include <memory>

FUZZ(Input)
{
	static const std::unique_ptr<lua_State, decltype(&lua_close)> Kept(luaL_newstate(), &lua_close); // making one takes longer than a run
	const auto Empty = [](lua_State* State)
	{
		lua_settop(State, 0);
		lua_gc(State, LUA_GCCOLLECT);
	};
	const std::unique_ptr<lua_State, decltype(Empty)> Lua(Kept.get());
	try
	{
		Script::decodeJson(Lua.get(), Input.Rest());
	}
	catch (const Reflect::InputError& Refused)
	{
		HOST_CHECK(*Refused.what() != '\0');
		return;
	}
	const std::string First = Script::encodeJson(Lua.get(), 1);
	lua_settop(Lua.get(), 0);
	Script::decodeJson(Lua.get(), First);
	HOST_CHECK(Script::encodeJson(Lua.get(), 1) == First && lua_gettop(Lua.get()) == 1);
}
