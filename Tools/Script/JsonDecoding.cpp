#include "JsonDecoding.h"

#include "InputError.h"
#include "JsonMarks.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <vector>

namespace Script
{
	namespace
	{
		using Json = nlohmann::json;
		using Reflect::InputError;

		constexpr int stackForDecoding = 8;

		/** Builds on Lua's stack what the parser reads. Its functions return whether to go on; faults are thrown. */
		class Builder : public nlohmann::json_sax<Json>
		{
		public:
			explicit Builder(lua_State* luaState)
				: lua(luaState)
			{
			}

			bool null() override
			{
				pushJsonNull(lua);
				return addValue();
			}
			bool boolean(bool value) override
			{
				lua_pushboolean(lua, value);
				return addValue();
			}
			bool number_integer(number_integer_t value) override
			{
				lua_pushinteger(lua, value);
				return addValue();
			}
			/** Lua has no integers beyond 64 bits with a sign; its own texts become floats there, too. */
			bool number_unsigned(number_unsigned_t value) override
			{
				const bool fits = value <= static_cast<number_unsigned_t>(std::numeric_limits<lua_Integer>::max());
				fits ? lua_pushinteger(lua, static_cast<lua_Integer>(value)) : lua_pushnumber(lua, static_cast<lua_Number>(value));
				return addValue();
			}
			bool number_float(number_float_t value, const string_t&) override
			{
				lua_pushnumber(lua, value);
				return addValue();
			}
			bool string(string_t& value) override
			{
				lua_pushlstring(lua, value.data(), value.size());
				return addValue();
			}
			bool binary(binary_t&) override { return false; } // not in texts
			bool start_object(size_t) override { return begin(0); }
			bool key(string_t& name) override
			{
				lua_pushlstring(lua, name.data(), name.size());
				return true;
			}
			bool end_object() override { return end(); }
			bool start_array(size_t) override
			{
				begin(1);
				markJsonArray(lua);
				return true;
			}
			bool end_array() override { return end(); }
			bool parse_error(size_t, const std::string&, const Json::exception& error) override
			{
				const std::string_view text = error.what(); // "[json.exception.parse_error.101] parse error at line 1, column 5: ..."
				throw InputError(std::string(text.substr(text.find("] ") + 2)));
			}

		private:
			bool begin(lua_Integer firstPlace)
			{
				if (places.size() == static_cast<size_t>(deepestJson))
				{
					throw InputError(fmt::format("more than {} lists and objects in each other", deepestJson));
				}
				luaL_checkstack(lua, stackForDecoding, nullptr);
				lua_newtable(lua);
				places.push_back(firstPlace);
				return true;
			}

			bool end()
			{
				places.pop_back();
				return addValue();
			}

			/** Gives the value on top to what is being read: the list below it, or the key below it and the object below that. */
			bool addValue()
			{
				if (!places.empty())
				{
					lua_Integer& next = places.back();
					next > 0 ? lua_rawseti(lua, -2, next++) : lua_rawset(lua, -3);
				}
				return true;
			}

			lua_State* const lua;
			std::vector<lua_Integer> places; // for each list that is open, the next one; 0 for an object
		};
	} // namespace

	void decodeJson(lua_State* lua, std::string_view text)
	{
		luaL_checkstack(lua, stackForDecoding, nullptr);
		Builder builder(lua);
		Json::sax_parse(text, &builder);
	}
} // namespace Script
