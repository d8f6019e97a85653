#include "NamedFields.h"

#include "InputError.h"
#include "NearestName.h"
#include "Reflection.h"
#include "UserData.h"

#include <fmt/format.h>

#include <vector>

namespace Script
{
	namespace
	{
		struct FieldNames
		{
			std::string title;
			std::vector<std::string> names;

			[[noreturn]] void refuse(std::string_view name) const
			{
				const std::string suggestion = Reflect::suggestion(name, names);
				throw Reflect::InputError(fmt::format("{} has no output pin '{}'{}", title, name,
					suggestion.empty() ? fmt::format(" (it has: {})", fmt::join(names, ", ")) : suggestion));
			}
		};
	} // namespace

	template <>
	const char* const UserData<FieldNames>::typeName = "field names";

	namespace
	{
		/** Comes for names that the table lacks: in another spelling, of no pin, or of a pin that is an object that is not there. */
		int findField(lua_State* lua)
		{
			const FieldNames& fields = UserData<FieldNames>::check(lua, lua_upvalueindex(1));
			size_t size = 0;
			const char* const text = luaL_tolstring(lua, 2, &size);
			const std::string_view name(text, size);
			for (const std::string& candidate : fields.names)
			{
				if (Reflect::equalNames(candidate, name))
				{
					lua_pushlstring(lua, candidate.data(), candidate.size());
					lua_rawget(lua, 1);
					return 1;
				}
			}
			fields.refuse(name);
		}

		FieldNames namesOf(const std::string& title, std::span<const FParameter> pins, bool (*accept)(EParameterKind kind))
		{
			FieldNames fields{title, {}};
			for (const FParameter& pin : pins)
			{
				if (accept(pin.Kind))
				{
					fields.names.emplace_back(pin.Name);
				}
			}
			return fields;
		}
	} // namespace

	void nameFields(
		lua_State* lua, const void* owner, const std::string& title, std::span<const FParameter> pins, bool (*accept)(EParameterKind kind))
	{
		static constexpr luaL_Reg none[] = {{nullptr, nullptr}};
		luaL_checkstack(lua, LUA_MINSTACK, nullptr);
		if (lua_rawgetp(lua, LUA_REGISTRYINDEX, owner) == LUA_TNIL)
		{
			lua_pop(lua, 1);
			lua_createtable(lua, 0, 1);
			UserData<FieldNames>::push(lua, none, namesOf(title, pins, accept));
			lua_pushcclosure(lua, guarded<findField>, 1);
			lua_setfield(lua, -2, "__index");
			lua_pushvalue(lua, -1);
			lua_rawsetp(lua, LUA_REGISTRYINDEX, owner);
		}
		lua_setmetatable(lua, -2);
	}
} // namespace Script
