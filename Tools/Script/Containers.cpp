#include "Converters.h"
#include "Value.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

namespace Script
{
	namespace
	{
		constexpr int stackNeeded = 8;

		void pushArray(lua_State* lua, const FPropertyType& type, const void* value)
		{
			luaL_checkstack(lua, stackNeeded, nullptr);
			void* const array = const_cast<void*>(value); // the accessor is for both uses; nothing is changed here
			const int32 count = type.ArrayNum(array);
			lua_createtable(lua, count, 0);
			for (int32 index = 0; index < count; ++index)
			{
				pushValue(lua, *type.Inner(), type.ArrayAt(array, index));
				lua_rawseti(lua, -2, index + 1);
			}
		}

		/** Throws unless every key of the table is one of 1 to count. */
		void checkList(lua_State* lua, int index, lua_Integer count)
		{
			lua_pushnil(lua);
			while (lua_next(lua, index))
			{
				lua_pop(lua, 1);
				const bool isPlace = lua_isinteger(lua, -1) && lua_tointeger(lua, -1) >= 1 && lua_tointeger(lua, -1) <= count;
				if (!isPlace)
				{
					lua_pushvalue(lua, -1);
					throw ScriptError(fmt::format("expected a list, got a table with the key '{}'", luaL_tolstring(lua, -1, nullptr)));
				}
			}
		}

		lua_Integer listLength(lua_State* lua, int index, const FPropertyType& type)
		{
			if (!lua_istable(lua, index))
			{
				refuseValue(lua, index, type);
			}
			const lua_Unsigned count = lua_rawlen(lua, index);
			if (count > static_cast<lua_Unsigned>(MAX_int32))
			{
				throw ScriptError("a list of more than 2147483647 elements");
			}
			checkList(lua, index, static_cast<lua_Integer>(count));
			return static_cast<lua_Integer>(count);
		}

		/** Runs a step that reads the value on top of the stack, names the place in its error, and pops the value. */
		template <class Step>
		void within(lua_State* lua, const std::string& place, Step step)
		{
			try
			{
				step(lua_gettop(lua));
			}
			catch (const ScriptError& error)
			{
				throw error.inside(place);
			}
			lua_pop(lua, 1);
		}

		void readArray(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			luaL_checkstack(lua, stackNeeded, nullptr);
			const lua_Integer count = listLength(lua, index, type);
			Value fresh(type);
			for (lua_Integer place = 1; place <= count; ++place)
			{
				lua_rawgeti(lua, index, place);
				void* const element = type.ArrayAdd(fresh.get());
				within(lua, fmt::format("element {}", place), [&](int top) { readValue(lua, top, *type.Inner(), element); });
			}
			type.Assign(value, fresh.get());
		}

		void pushBytes(lua_State* lua, const FPropertyType&, const void* value)
		{
			const TArray<uint8>& bytes = *static_cast<const TArray<uint8>*>(value);
			lua_pushlstring(lua, reinterpret_cast<const char*>(bytes.GetData()), static_cast<size_t>(bytes.Num()));
		}

		void readBytes(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			if (lua_type(lua, index) != LUA_TSTRING)
			{
				refuseValue(lua, index, type);
			}
			size_t size = 0;
			const char* bytes = lua_tolstring(lua, index, &size);
			if (size > static_cast<size_t>(MAX_int32))
			{
				throw ScriptError("more than 2147483647 bytes");
			}
			TArray<uint8>& array = *static_cast<TArray<uint8>*>(value);
			array.Reset();
			array.Append(reinterpret_cast<const uint8*>(bytes), static_cast<int32>(size));
		}

		void pushMap(lua_State* lua, const FPropertyType& type, const void* value)
		{
			luaL_checkstack(lua, stackNeeded, nullptr);
			lua_newtable(lua);
			type.MapVisit(const_cast<void*>(value),
				[&](const void* key, void* mapped)
				{
					pushValue(lua, *type.Inner(), key);
					pushValue(lua, *type.Value(), mapped);
					lua_rawset(lua, -3);
				});
		}

		/** Adds the pair of the key below the top and the value on top of the stack, and pops both. */
		void addPair(lua_State* lua, const FPropertyType& type, void* map)
		{
			const int keyIndex = lua_absindex(lua, -2);
			Value key(*type.Inner());
			try
			{
				readValue(lua, keyIndex, *type.Inner(), key.get());
			}
			catch (const ScriptError& error)
			{
				throw error.inside("key");
			}
			lua_pushvalue(lua, keyIndex);
			const std::string place = fmt::format("value of key '{}'", lua_tostring(lua, -1));
			lua_pop(lua, 1);
			within(lua, place, [&](int top) { readValue(lua, top, *type.Value(), type.MapAdd(map, key.get())); });
			lua_pop(lua, 1);
		}

		/** A Lua table has no order, so its keys go in bytewise order: the same script always sends the same bytes. */
		void readTable(lua_State* lua, int index, const FPropertyType& type, void* map)
		{
			std::vector<std::variant<lua_Integer, std::string_view>> keys; // views of strings that the table holds
			lua_pushnil(lua);
			while (lua_next(lua, index))
			{
				lua_pop(lua, 1);
				size_t size = 0;
				if (lua_type(lua, -1) == LUA_TSTRING)
				{
					const char* bytes = lua_tolstring(lua, -1, &size);
					keys.emplace_back(std::string_view(bytes, size));
				}
				else if (lua_isinteger(lua, -1))
				{
					keys.emplace_back(lua_tointeger(lua, -1));
				}
				else
				{
					refuseValue(lua, index, type);
				}
			}
			std::sort(keys.begin(), keys.end());
			for (const auto& key : keys)
			{
				if (const auto* text = std::get_if<std::string_view>(&key))
				{
					lua_pushlstring(lua, text->data(), text->size());
				}
				else
				{
					lua_pushinteger(lua, std::get<lua_Integer>(key));
				}
				lua_pushvalue(lua, -1);
				lua_rawget(lua, index);
				addPair(lua, type, map);
			}
		}

		void readPairs(lua_State* lua, int index, const FPropertyType& type, void* map)
		{
			const lua_Integer count = listLength(lua, index, type);
			for (lua_Integer place = 1; place <= count; ++place)
			{
				lua_rawgeti(lua, index, place);
				within(lua, fmt::format("pair {}", place),
					[&](int pair)
					{
						if (!lua_istable(lua, pair) || lua_rawlen(lua, pair) != 2)
						{
							throw ScriptError("expected {key, value}");
						}
						checkList(lua, pair, 2);
						lua_rawgeti(lua, pair, 1);
						lua_rawgeti(lua, pair, 2);
						addPair(lua, type, map);
					});
			}
		}

		/** Map values are never tables, so a table in the first place tells a list of pairs from a map. */
		void readMap(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			luaL_checkstack(lua, stackNeeded, nullptr);
			if (!lua_istable(lua, index))
			{
				refuseValue(lua, index, type);
			}
			const bool isPairList = lua_rawgeti(lua, index, 1) == LUA_TTABLE;
			lua_pop(lua, 1);
			Value fresh(type);
			(isPairList ? readPairs : readTable)(lua, index, type, fresh.get());
			type.Assign(value, fresh.get());
		}
	} // namespace

	const Converter arrayConverter{pushArray, readArray};
	const Converter byteArrayConverter{pushBytes, readBytes};
	const Converter mapConverter{pushMap, readMap};
} // namespace Script
