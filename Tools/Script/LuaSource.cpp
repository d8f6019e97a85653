#include "LuaSource.h"

#include "InputError.h"
#include "Reflection.h"

#include <fmt/format.h>

#include <algorithm>
#include <variant>
#include <vector>

namespace Script
{
	namespace
	{
		using Reflect::InputError;

		constexpr int stackForText = 8;

		/** The value as an error message shows it: small values themselves, else their type. */
		std::string describe(lua_State* lua, int index)
		{
			constexpr size_t longestQuote = 40;

			const int type = lua_type(lua, index);
			if (type == LUA_TNUMBER || type == LUA_TUSERDATA)
			{
				const std::string shown = luaL_tolstring(lua, index, nullptr);
				lua_pop(lua, 1);
				return shown;
			}
			size_t size = 0;
			const char* text = type == LUA_TSTRING ? lua_tolstring(lua, index, &size) : nullptr;
			if (text && size <= longestQuote)
			{
				return fmt::format("string '{}'", std::string_view(text, size));
			}
			return luaL_typename(lua, index);
		}

		std::string expectation(const FPropertyType& type)
		{
			switch (type.Kind)
			{
			case EPropertyKind::Byte:
				return "uint8 (0 to 255)";
			case EPropertyKind::Int:
				return "int32 (-2147483648 to 2147483647)";
			case EPropertyKind::Int64:
				return "int64 (a whole number)";
			default:
				return Reflect::typeName(type);
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
					throw InputError(fmt::format("expected a list, got a table with the key '{}'", luaL_tolstring(lua, -1, nullptr)));
				}
			}
		}

		/** Visits a value, and names its place in the error. */
		template <class Place, class Visit>
		void within(Place place, const LuaSource& value, Visit visit)
		{
			try
			{
				visit(value);
			}
			catch (const InputError& error)
			{
				throw error.inside(place());
			}
		}

		/** Visits the elements of a list. @param kind  what error messages call one. */
		template <class Visit>
		void visitElements(lua_State* lua, int index, const char* kind, Visit visit)
		{
			luaL_checkstack(lua, stackForText, nullptr);
			const lua_Unsigned count = lua_rawlen(lua, index);
			if (count > static_cast<lua_Unsigned>(MAX_int32))
			{
				throw InputError("a list of more than 2147483647 elements");
			}
			checkList(lua, index, static_cast<lua_Integer>(count));
			for (lua_Integer place = 1; place <= static_cast<lua_Integer>(count); ++place)
			{
				lua_rawgeti(lua, index, place);
				within([&] { return fmt::format("{} {}", kind, place); }, LuaSource(lua, lua_gettop(lua)), visit);
				lua_pop(lua, 1);
			}
		}

		/** Visits the key below the top and the value on top of the stack, and pops both. */
		void visitPair(lua_State* lua, const LuaSource::Visitor& visitKey, const LuaSource::Visitor& visitValue)
		{
			const int key = lua_gettop(lua) - 1;
			within([] { return "key"; }, LuaSource(lua, key), visitKey);
			within(
				[&] { return fmt::format("value of key '{}'", luaL_tolstring(lua, key, nullptr)); }, LuaSource(lua, key + 1), visitValue);
			lua_pop(lua, 2);
		}
	} // namespace

	std::optional<bool> LuaSource::boolean() const
	{
		return lua_isboolean(lua, index) ? std::optional(lua_toboolean(lua, index) != 0) : std::nullopt;
	}

	std::optional<int64> LuaSource::integer() const
	{
		int isInteger = 0;
		const lua_Integer value = lua_type(lua, index) == LUA_TNUMBER ? lua_tointegerx(lua, index, &isInteger) : 0;
		return isInteger ? std::optional<int64>(value) : std::nullopt;
	}

	std::optional<double> LuaSource::number() const
	{
		return lua_type(lua, index) == LUA_TNUMBER ? std::optional(lua_tonumber(lua, index)) : std::nullopt;
	}

	std::optional<std::string_view> LuaSource::text() const
	{
		if (lua_type(lua, index) != LUA_TSTRING)
		{
			return std::nullopt;
		}
		size_t size = 0;
		const char* const bytes = lua_tolstring(lua, index, &size);
		return std::string_view(bytes, size);
	}

	bool LuaSource::wholeList(const FPropertyType& type, void* array) const
	{
		const RecordList* const records = recordListAt(lua, index);
		const bool fits = records && &records->type() == &type;
		if (fits)
		{
			records->giveTo(array);
		}
		return fits;
	}

	bool LuaSource::list(const Visitor& element) const
	{
		const bool isTable = lua_istable(lua, index);
		if (isTable)
		{
			visitElements(lua, index, "element", element);
		}
		return isTable;
	}

	bool LuaSource::map(const Visitor& key, const Visitor& value) const
	{
		luaL_checkstack(lua, stackForText, nullptr);
		if (!lua_istable(lua, index))
		{
			return false;
		}
		const bool isPairList = lua_rawgeti(lua, index, 1) == LUA_TTABLE;
		lua_pop(lua, 1);
		return isPairList ? pairs(key, value) : table(key, value);
	}

	/** A Lua table has no order, so its keys go in bytewise order: the same script always sends the same bytes. */
	bool LuaSource::table(const Visitor& visitKey, const Visitor& visitValue) const
	{
		std::vector<std::variant<lua_Integer, std::string_view>> keys; // views of strings that the table holds
		lua_pushnil(lua);
		while (lua_next(lua, index))
		{
			lua_pop(lua, 1);
			const LuaSource key(lua, lua_gettop(lua));
			if (const std::optional<std::string_view> text = key.text())
			{
				keys.emplace_back(*text);
			}
			else if (lua_isinteger(lua, -1))
			{
				keys.emplace_back(lua_tointeger(lua, -1));
			}
			else
			{
				return false;
			}
		}
		std::sort(keys.begin(), keys.end());
		for (const auto& key : keys)
		{
			const auto* const text = std::get_if<std::string_view>(&key);
			text ? void(lua_pushlstring(lua, text->data(), text->size())) : lua_pushinteger(lua, std::get<lua_Integer>(key));
			lua_pushvalue(lua, -1);
			lua_rawget(lua, index);
			visitPair(lua, visitKey, visitValue);
		}
		return true;
	}

	bool LuaSource::pairs(const Visitor& visitKey, const Visitor& visitValue) const
	{
		const auto visit = [&](const LuaSource& pair)
		{
			if (!lua_istable(lua, pair.index) || lua_rawlen(lua, pair.index) != 2)
			{
				throw InputError("expected {key, value}");
			}
			checkList(lua, pair.index, 2);
			lua_rawgeti(lua, pair.index, 1);
			lua_rawgeti(lua, pair.index, 2);
			visitPair(lua, visitKey, visitValue);
		};
		visitElements(lua, index, "pair", visit);
		return true;
	}

	void LuaSource::refuse(const FPropertyType& expected) const
	{
		throw InputError(fmt::format("expected {}, got {}", expectation(expected), describe(lua, index)));
	}
} // namespace Script
