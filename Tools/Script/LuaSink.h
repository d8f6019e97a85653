#pragma once

#include "JsonMarks.h"
#include "Lua.h"
#include "NamedFields.h"
#include "Objects.h"
#include "Records.h"
#include "ValueTransfer.h"

namespace Script
{
	/** Pushes values on Lua's stack. */
	class LuaSink : public Reflect::Sink
	{
	public:
		explicit LuaSink(lua_State* luaState)
			: lua(luaState)
		{
		}

		void boolean(bool value) override { lua_pushboolean(lua, value); }
		void integer(int64 value) override { lua_pushinteger(lua, value); }
		void number(double value) override { lua_pushnumber(lua, value); }
		void text(std::string_view utf8) override { lua_pushlstring(lua, utf8.data(), utf8.size()); }
		void bytes(std::span<const uint8> value) override
		{
			lua_pushlstring(lua, reinterpret_cast<const char*>(value.data()), value.size());
		}
		void enumerator(const UEnum&, int64 value) override { lua_pushinteger(lua, value); }
		void record(const FPropertyType& type, const void* value) override
		{
			pushRecord(lua, std::make_shared<Record>(Record{Reflect::Value(type, value)}));
		}
		void object(const FPropertyType&, UObject* object) override { pushObject(lua, object); }
		/** One that is empty stays a list when it is encoded. */
		void newList(int32 count) override
		{
			newTable(count);
			markJsonArray(lua);
		}
		void addElement(int32 index) override { lua_rawseti(lua, -2, index + 1); }
		void newMap() override { newTable(0); }
		void addPair() override { lua_rawset(lua, -3); }
		void endFields(const UScriptStruct& type) override { nameFields(lua, type); }

	private:
		static constexpr int stackNeeded = 8;

		void newTable(int32 count)
		{
			luaL_checkstack(lua, stackNeeded, nullptr);
			lua_createtable(lua, count, 0);
		}

		lua_State* const lua;
	};
} // namespace Script
