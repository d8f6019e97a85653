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
			const char* kind; // what error messages call one
			std::vector<std::string> names;

			[[noreturn]] void refuse(std::string_view name) const
			{
				const std::string suggestion = Reflect::suggestion(name, names);
				throw Reflect::InputError(fmt::format("{} has no {} '{}'{}", title, kind, name,
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
			FieldNames fields{title, "output pin", {}};
			for (const FParameter& pin : pins)
			{
				if (accept(pin.Kind))
				{
					fields.names.emplace_back(pin.Name);
				}
			}
			return fields;
		}
		FieldNames namesOf(const UScriptStruct& type)
		{
			FieldNames fields{type.Name, "field", {}};
			for (const FStructField& field : type.Fields)
			{
				fields.names.emplace_back(field.Name);
			}
			return fields;
		}

		/** @param make  is called for the first table of an owner only. */
		template <class Make>
		void setNames(lua_State* lua, const void* owner, Make make)
		{
			static constexpr luaL_Reg none[] = {{nullptr, nullptr}};
			luaL_checkstack(lua, LUA_MINSTACK, nullptr);
			if (lua_rawgetp(lua, LUA_REGISTRYINDEX, owner) == LUA_TNIL)
			{
				lua_pop(lua, 1);
				lua_createtable(lua, 0, 1);
				UserData<FieldNames>::push(lua, none, make());
				lua_pushcclosure(lua, guarded<findField>, 1);
				lua_setfield(lua, -2, "__index");
				lua_pushvalue(lua, -1);
				lua_rawsetp(lua, LUA_REGISTRYINDEX, owner);
			}
			lua_setmetatable(lua, -2);
		}
	} // namespace

	void nameFields(
		lua_State* lua, const void* owner, const std::string& title, std::span<const FParameter> pins, bool (*accept)(EParameterKind kind))
	{
		setNames(lua, owner, [&] { return namesOf(title, pins, accept); });
	}

	void nameFields(lua_State* lua, const UScriptStruct& type)
	{
		setNames(lua, &type, [&] { return namesOf(type); });
	}
} // namespace Script
