#include "JsonEncoding.h"

#include "InputError.h"
#include "JsonMarks.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace Script
{
	namespace
	{
		using Json = nlohmann::json; // sorts the keys: a Lua table has no order, and the same table shall give the same text
		using Reflect::InputError;

		constexpr int stackForEncoding = 8;

		class Encoder
		{
		public:
			explicit Encoder(lua_State* luaState)
				: lua(luaState)
			{
			}

			Json valueAt(int index)
			{
				switch (lua_type(lua, index))
				{
				case LUA_TNIL:
					return nullptr;
				case LUA_TBOOLEAN:
					return lua_toboolean(lua, index) != 0;
				case LUA_TNUMBER:
					return numberAt(index);
				case LUA_TSTRING:
					return textAt(index);
				case LUA_TTABLE:
					return tableAt(index);
				default:
					return otherAt(index);
				}
			}

		private:
			Json numberAt(int index)
			{
				if (lua_isinteger(lua, index))
				{
					return static_cast<std::int64_t>(lua_tointeger(lua, index));
				}
				const lua_Number number = lua_tonumber(lua, index);
				if (!std::isfinite(number))
				{
					throw InputError(fmt::format("JSON has no number {}", number));
				}
				return number;
			}

			std::string textAt(int index)
			{
				size_t size = 0;
				const char* const text = lua_tolstring(lua, index, &size);
				std::string copy(text, size);
				try
				{
					static_cast<void>(Json(copy).dump());
				}
				catch (const Json::type_error&)
				{
					throw InputError("text that is not UTF-8; bytes go through base64");
				}
				return copy;
			}

			Json otherAt(int index)
			{
				if (!isJsonNull(lua, index))
				{
					throw InputError(fmt::format("JSON has no {}", luaL_typename(lua, index)));
				}
				return nullptr;
			}

			Json tableAt(int index)
			{
				const void* const self = lua_topointer(lua, index);
				if (std::find(open.begin(), open.end(), self) != open.end())
				{
					throw InputError("a table that holds itself");
				}
				if (open.size() == static_cast<size_t>(deepestJson))
				{
					throw std::runtime_error(fmt::format("json.encode: more than {} tables in each other", deepestJson));
				}
				luaL_checkstack(lua, stackForEncoding, nullptr);
				open.push_back(self);
				const lua_Unsigned count = lua_rawlen(lua, index);
				Json table = count > 0 || isMarkedAsJsonArray(lua, index) ? listAt(index, count) : objectAt(index);
				open.pop_back();
				return table;
			}

			Json listAt(int index, lua_Unsigned count)
			{
				checkPlaces(index, count);
				Json list = Json::array();
				for (lua_Unsigned place = 1; place <= count; ++place)
				{
					lua_rawgeti(lua, index, static_cast<lua_Integer>(place));
					list.push_back(within(fmt::format("element {}", place)));
				}
				return list;
			}

			/** Throws unless the keys are 1 to count, without a gap. */
			void checkPlaces(int index, lua_Unsigned count)
			{
				lua_Unsigned found = 0;
				for (lua_pushnil(lua); lua_next(lua, index); lua_pop(lua, 1))
				{
					const lua_Integer place = lua_isinteger(lua, -2) ? lua_tointeger(lua, -2) : 0;
					if (place < 1 || static_cast<lua_Unsigned>(place) > count)
					{
						throw InputError(fmt::format("a list that also has the key '{}'", keyText(-2)));
					}
					++found;
				}
				if (found != count)
				{
					throw InputError("a list with a gap; json.null fills it");
				}
			}

			Json objectAt(int index)
			{
				Json object = Json::object();
				for (lua_pushnil(lua); lua_next(lua, index);)
				{
					if (lua_type(lua, -2) != LUA_TSTRING)
					{
						throw InputError(fmt::format("keys of an object are text, not {}", keyText(-2)));
					}
					const std::string key = textAt(lua_gettop(lua) - 1);
					object[key] = within(fmt::format("key '{}'", key));
				}
				return object;
			}

			/** Encodes the value on top, and pops it. */
			Json within(const std::string& place)
			{
				try
				{
					Json value = valueAt(lua_gettop(lua));
					lua_pop(lua, 1);
					return value;
				}
				catch (const InputError& error)
				{
					throw error.inside(place);
				}
			}

			std::string keyText(int index)
			{
				std::string text = luaL_tolstring(lua, index, nullptr);
				lua_pop(lua, 1);
				return text;
			}

			lua_State* const lua;
			std::vector<const void*> open; // the tables that hold what is being encoded
		};
	} // namespace

	std::string encodeJson(lua_State* lua, int index)
	{
		return Encoder(lua).valueAt(index).dump();
	}
} // namespace Script
