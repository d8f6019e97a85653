#include "Lab/Script/LuaState.h"

#include "Lab/Origin.h"
#include "Lab/Plans/Md5.h"
#include "Lab/Script/Catalogue.h"
#include "Lab/Script/LuaValues.h"
#include "Lua/Guarded.h"

#include <stdexcept>

namespace Lab
{
	namespace
	{
		using NativeLua::guarded;

		constexpr const char* behaviourType = "lab behaviour";

		int destroyBehaviour(lua_State* lua)
		{
			std::destroy_at(static_cast<Behaviour*>(luaL_checkudata(lua, 1, behaviourType)));
			return 0;
		}

		/** What single values mean that stand in place of a table: lab.text "hello". */
		nlohmann::json optionsAt(lua_State* lua, const CatalogueEntry& entry)
		{
			if (lua_isnoneornil(lua, 1))
			{
				return nlohmann::json::object();
			}
			const nlohmann::json value = fromLua(lua, 1);
			if (value.is_object())
			{
				return value;
			}
			return entry.options.empty() ? throw std::invalid_argument(entry.name + " takes a table with its options")
										 : nlohmann::json{{entry.options.front().name, value}};
		}
	} // namespace

	LuaState::LuaState(Origin& inOrigin)
		: lua(luaL_newstate())
		, origin(inOrigin)
	{
		if (!lua)
		{
			throw std::bad_alloc();
		}
		*static_cast<LuaState**>(lua_getextraspace(lua)) = this; // coroutines inherit it
		luaL_openlibs(lua);
		open();
	}

	LuaState::~LuaState()
	{
		lua_close(lua);
	}

	void LuaState::open()
	{
		luaL_newmetatable(lua, behaviourType);
		lua_pushcfunction(lua, destroyBehaviour);
		lua_setfield(lua, -2, "__gc");
		lua_pushboolean(lua, 0);
		lua_setfield(lua, -2, "__metatable"); // scripts cannot take it and destroy themselves
		lua_pop(lua, 1);
		const luaL_Reg functions[] = {{"at", guarded<at>}, {"inTurn", guarded<takeTurns>}, {"together", guarded<together>},
			{"log", guarded<log>}, {"md5", guarded<md5>}, {nullptr, nullptr}};
		luaL_newlib(lua, functions);
		for (const CatalogueEntry& entry : catalogue())
		{
			lua_pushlightuserdata(lua, const_cast<CatalogueEntry*>(&entry));
			lua_pushcclosure(lua, guarded<make>, 1);
			lua_setfield(lua, -2, entry.name.c_str());
		}
		pushText(lua, origin.url(""));
		lua_setfield(lua, -2, "url");
		lua_setglobal(lua, "lab");
	}

	void LuaState::runFile(const std::string& path, const std::vector<std::string>& arguments)
	{
		const std::scoped_lock lock(mutex);
		lua_createtable(lua, static_cast<int>(arguments.size()), 1);
		pushText(lua, path);
		lua_seti(lua, -2, 0);
		for (std::size_t index = 0; index < arguments.size(); ++index)
		{
			pushText(lua, arguments[index]);
			lua_seti(lua, -2, static_cast<lua_Integer>(index) + 1);
		}
		lua_setglobal(lua, "arg");
		run(luaL_loadfilex(lua, path.c_str(), "t"));
	}

	void LuaState::runText(const std::string& text)
	{
		const std::scoped_lock lock(mutex);
		run(luaL_loadbufferx(lua, text.data(), text.size(), "=lab", "t"));
	}

	/** The loaded chunk, or the message why it was not, is the one value on the stack. */
	void LuaState::run(int loadStatus)
	{
		if (loadStatus != LUA_OK || lua_pcall(lua, 0, 0, 0) != LUA_OK)
		{
			const char* const message = lua_tostring(lua, -1);
			const std::string fault = message ? message : "an error without a message";
			lua_settop(lua, 0);
			throw std::runtime_error(fault);
		}
	}

	void LuaState::push(Behaviour behaviour)
	{
		::new (lua_newuserdatauv(lua, sizeof(Behaviour), 0)) Behaviour(std::move(behaviour));
		luaL_setmetatable(lua, behaviourType);
	}

	Behaviour LuaState::behaviourAt(int index)
	{
		if (const void* const made = luaL_testudata(lua, index, behaviourType))
		{
			return *static_cast<const Behaviour*>(made);
		}
		switch (lua_type(lua, index))
		{
		case LUA_TSTRING:
			return Behaviour(fromLua(lua, index).get<std::string>());
		case LUA_TFUNCTION:
			return functionAt(index);
		case LUA_TTABLE:
			return listAt(index);
		case LUA_TNIL:
			return std::vector<Behaviour>();
		default:
			throw std::invalid_argument(std::string("a ") + luaL_typename(lua, index) + " is no behaviour");
		}
	}

	/** Held weakly: the origin may outlive the script, and a script hold behaviours that call it. */
	Behaviour LuaState::functionAt(int index)
	{
		lua_pushvalue(lua, index);
		const int function = luaL_ref(lua, LUA_REGISTRYINDEX);
		return Behaviour(
			[weak = weak_from_this(), function](const Request& request)
			{
				const std::shared_ptr<LuaState> alive = weak.lock();
				return alive ? alive->call(function, request) : throw std::runtime_error("the script has ended");
			});
	}

	std::vector<Behaviour> LuaState::listAt(int table)
	{
		std::vector<Behaviour> list;
		const int place = lua_absindex(lua, table);
		for (lua_Integer index = 1; index <= luaL_len(lua, place); ++index)
		{
			lua_geti(lua, place, index);
			list.push_back(behaviourAt(-1));
			lua_pop(lua, 1);
		}
		return list;
	}

	Behaviour LuaState::call(int function, const Request& request)
	{
		const std::scoped_lock lock(mutex);
		const int top = lua_gettop(lua);
		lua_rawgeti(lua, LUA_REGISTRYINDEX, function);
		pushRequest(lua, request);
		if (lua_pcall(lua, 1, 1, 0) != LUA_OK)
		{
			const char* const message = lua_tostring(lua, -1);
			const std::string fault = message ? message : "an error without a message";
			lua_settop(lua, top);
			throw std::runtime_error(fault);
		}
		Behaviour decided = behaviourAt(-1);
		lua_settop(lua, top);
		return decided;
	}

	int LuaState::at(lua_State* lua)
	{
		const std::string place = luaL_checkstring(lua, 1);
		std::vector<Behaviour> behaviours;
		for (int index = 2; index <= lua_gettop(lua); ++index)
		{
			behaviours.push_back(of(lua).behaviourAt(index));
		}
		of(lua).origin.setPlace(place, std::move(behaviours));
		return 0;
	}

	int LuaState::make(lua_State* lua)
	{
		const auto& entry = *static_cast<const CatalogueEntry*>(lua_touserdata(lua, lua_upvalueindex(1)));
		of(lua).push(makeBehaviour(entry.name, optionsAt(lua, entry)));
		return 1;
	}

	int LuaState::takeTurns(lua_State* lua)
	{
		luaL_checktype(lua, 1, LUA_TTABLE);
		std::vector<Behaviour> turns = of(lua).listAt(1);
		of(lua).push(turns.empty() ? throw std::invalid_argument("inTurn needs a behaviour at least") : inTurn(std::move(turns)));
		return 1;
	}

	int LuaState::together(lua_State* lua)
	{
		luaL_checktype(lua, 1, LUA_TTABLE);
		of(lua).push(of(lua).listAt(1));
		return 1;
	}

	int LuaState::log(lua_State* lua)
	{
		toLua(lua, toJson(of(lua).origin.log()));
		return 1;
	}

	int LuaState::md5(lua_State* lua)
	{
		std::size_t size = 0;
		const char* const bytes = luaL_checklstring(lua, 1, &size);
		Md5 sum;
		sum.add({bytes, size});
		pushText(lua, sum.hex());
		return 1;
	}
} // namespace Lab
