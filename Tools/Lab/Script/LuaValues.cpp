#include "Lab/Script/LuaValues.h"

#include "Lab/Behaviours/Uploads.h"

#include <nlohmann/json.hpp>

#include <cctype>
#include <stdexcept>

namespace Lab
{
	namespace
	{
		constexpr int deepest = 16;

		std::string textAt(lua_State* lua, int index)
		{
			std::size_t size = 0;
			const char* const bytes = lua_tolstring(lua, index, &size);
			return std::string(bytes, size);
		}

		nlohmann::json valueAt(lua_State* lua, int index, int depth);

		nlohmann::json tableAt(lua_State* lua, int index, int depth)
		{
			if (depth > deepest || !lua_checkstack(lua, 4))
			{
				throw std::invalid_argument("a table is too deep");
			}
			nlohmann::json list = nlohmann::json::array();
			nlohmann::json object = nlohmann::json::object();
			const int table = lua_absindex(lua, index);
			for (lua_Integer place = 1; place <= luaL_len(lua, table); ++place)
			{
				lua_geti(lua, table, place);
				list.push_back(valueAt(lua, -1, depth + 1));
				lua_pop(lua, 1);
			}
			for (lua_pushnil(lua); lua_next(lua, table); lua_pop(lua, 1))
			{
				if (lua_type(lua, -2) == LUA_TSTRING)
				{
					object[textAt(lua, -2)] = valueAt(lua, -1, depth + 1);
				}
			}
			if (!list.empty() && !object.empty())
			{
				throw std::invalid_argument("a table is a list or has names, not both");
			}
			return list.empty() ? object : list;
		}

		nlohmann::json valueAt(lua_State* lua, int index, int depth)
		{
			switch (lua_type(lua, index))
			{
			case LUA_TNIL:
				return nullptr;
			case LUA_TBOOLEAN:
				return lua_toboolean(lua, index) != 0;
			case LUA_TNUMBER:
				return lua_isinteger(lua, index) ? nlohmann::json(lua_tointeger(lua, index)) : nlohmann::json(lua_tonumber(lua, index));
			case LUA_TSTRING:
				return textAt(lua, index);
			case LUA_TTABLE:
				return tableAt(lua, index, depth);
			default:
				throw std::invalid_argument(std::string("a ") + luaL_typename(lua, index) + " is no value for an option");
			}
		}

		void setText(lua_State* lua, const char* name, const std::string& text)
		{
			pushText(lua, text);
			lua_setfield(lua, -2, name);
		}

		void pushPairs(lua_State* lua, const std::vector<Header>& pairs, bool inLowerCase)
		{
			lua_createtable(lua, 0, static_cast<int>(pairs.size()));
			for (const Header& pair : pairs)
			{
				std::string name = pair.name;
				for (char& letter : name)
				{
					letter = inLowerCase ? static_cast<char>(std::tolower(static_cast<unsigned char>(letter))) : letter;
				}
				setText(lua, name.c_str(), pair.value);
			}
		}

		void pushForm(lua_State* lua, const Request& request)
		{
			lua_newtable(lua);
			lua_Integer place = 0;
			for (const FormPart& part : parseForm(request))
			{
				lua_createtable(lua, 0, 4);
				setText(lua, "name", part.name);
				setText(lua, "fileName", part.fileName);
				setText(lua, "type", part.type);
				setText(lua, "bytes", part.bytes);
				lua_seti(lua, -2, ++place);
			}
		}
	} // namespace

	nlohmann::json fromLua(lua_State* lua, int index)
	{
		return valueAt(lua, index, 0);
	}

	void pushText(lua_State* lua, const std::string& text)
	{
		lua_pushlstring(lua, text.data(), text.size());
	}

	void toLua(lua_State* lua, const nlohmann::json& value)
	{
		luaL_checkstack(lua, 4, "too deep");
		if (value.is_structured())
		{
			lua_newtable(lua);
			lua_Integer place = 0;
			for (const auto& [name, each] : value.items())
			{
				value.is_array() ? (void)lua_pushinteger(lua, ++place) : pushText(lua, name);
				toLua(lua, each);
				lua_settable(lua, -3);
			}
		}
		else if (value.is_number_integer())
		{
			lua_pushinteger(lua, value.get<lua_Integer>());
		}
		else if (value.is_number())
		{
			lua_pushnumber(lua, value.get<double>());
		}
		else
		{
			value.is_string() ? pushText(lua, value.get<std::string>())
			: value.is_null() ? lua_pushnil(lua)
							  : lua_pushboolean(lua, value.get<bool>());
		}
	}

	void pushRequest(lua_State* lua, const Request& request)
	{
		lua_createtable(lua, 0, 10);
		setText(lua, "method", request.method);
		setText(lua, "target", request.target);
		setText(lua, "path", std::string(request.path()));
		setText(lua, "head", request.head);
		setText(lua, "body", request.body);
		pushPairs(lua, parsePairs(request.query()), false);
		lua_setfield(lua, -2, "query");
		pushPairs(lua, request.headers, true);
		lua_setfield(lua, -2, "headers");
		pushForm(lua, request);
		lua_setfield(lua, -2, "form");
		lua_pushinteger(lua, static_cast<lua_Integer>(request.number));
		lua_setfield(lua, -2, "number");
		lua_pushinteger(lua, request.visit);
		lua_setfield(lua, -2, "visit");
	}
} // namespace Lab
