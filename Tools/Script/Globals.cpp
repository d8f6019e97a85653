#include "Globals.h"

#include "FunctionCall.h"
#include "InputError.h"
#include "NearestName.h"
#include "Reflection.h"

#include <algorithm>
#include <fmt/format.h>

namespace Script
{
	namespace
	{
		/**
		 * Looks a name up in another spelling. A name that is not there is an error: as nil it would silently stand for the
		 * default of the pin that it is given to.
		 */
		int findName(lua_State* lua)
		{
			size_t size = 0;
			const char* const name = luaL_tolstring(lua, 2, &size);
			std::vector<std::string> names;
			lua_pushnil(lua);
			while (lua_next(lua, 1))
			{
				size_t candidateSize = 0;
				const char* const candidate = lua_type(lua, -2) == LUA_TSTRING ? lua_tolstring(lua, -2, &candidateSize) : "";
				if (Reflect::equalNames({name, size}, {candidate, candidateSize}))
				{
					return 1;
				}
				names.emplace_back(candidate, candidateSize);
				lua_pop(lua, 1);
			}
			std::sort(names.begin(), names.end()); // the table has no order, the suggestion shall have one
			throw Reflect::InputError(fmt::format("{} has no {} '{}'{}", lua_tostring(lua, lua_upvalueindex(1)),
				lua_tostring(lua, lua_upvalueindex(2)), std::string_view(name, size), Reflect::suggestion({name, size}, names)));
		}

		/**
		 * Pushes the global table of that name, and makes it when it is not there yet.
		 * @param entryKind  what error messages call an entry.
		 */
		void pushNameTable(lua_State* lua, const char* name, const char* entryKind)
		{
			if (lua_getglobal(lua, name) == LUA_TTABLE)
			{
				return;
			}
			lua_pop(lua, 1);
			lua_newtable(lua);
			lua_newtable(lua);
			lua_pushstring(lua, name);
			lua_pushstring(lua, entryKind);
			lua_pushcclosure(lua, guarded<findName>, 2);
			lua_setfield(lua, -2, "__index");
			lua_setmetatable(lua, -2);
			lua_pushvalue(lua, -1);
			lua_setglobal(lua, name);
		}
	} // namespace

	void openGlobals(lua_State* lua)
	{
		for (const Reflect::Function& function : Reflect::functions())
		{
			pushNameTable(lua, function.owner->GetName(), "function");
			pushFunction(lua, function);
			lua_setfield(lua, -2, function.function->Name);
			lua_pop(lua, 1);
		}
		for (const UEnum* enumeration : Reflect::enumerations())
		{
			pushNameTable(lua, enumeration->Name, "value");
			for (const FEnumerator& entry : enumeration->Enumerators)
			{
				lua_pushinteger(lua, entry.Value);
				lua_setfield(lua, -2, entry.Name);
			}
			lua_pop(lua, 1);
		}
	}
} // namespace Script
