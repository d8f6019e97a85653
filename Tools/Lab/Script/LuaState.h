#pragma once

#include "Lab/Plans/Behaviour.h"

#include <lua.hpp>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Lab
{
	class Origin;

	/** Lua with the table "lab". Thread: any, one at a time. */
	class LuaState : public std::enable_shared_from_this<LuaState>
	{
	public:
		explicit LuaState(Origin& origin);
		~LuaState();
		LuaState(const LuaState&) = delete;
		LuaState& operator=(const LuaState&) = delete;

		void runFile(const std::string& path, const std::vector<std::string>& arguments);
		void runText(const std::string& text);
		/** Asks a function of the script, which the registry has under this number. */
		Behaviour call(int function, const Request& request);

	private:
		static LuaState& of(lua_State* lua) { return **static_cast<LuaState**>(lua_getextraspace(lua)); }
		static int at(lua_State* lua);
		static int make(lua_State* lua);
		static int takeTurns(lua_State* lua);
		static int together(lua_State* lua);
		static int log(lua_State* lua);
		static int md5(lua_State* lua);

		void open();
		void run(int loadStatus);
		void push(Behaviour behaviour);
		Behaviour behaviourAt(int index);
		Behaviour functionAt(int index);
		std::vector<Behaviour> listAt(int table);

		std::recursive_mutex mutex; // guards Lua
		lua_State* const lua;
		Origin& origin;
	};
} // namespace Lab
