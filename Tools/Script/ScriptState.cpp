#include "ScriptState.h"

#include "Context.h"
#include "CoreTypes.h"
#include "EndHook.h"
#include "Execute.h"
#include "Globals.h"
#include "Json.h"
#include "Print.h"
#include "Waiting.h"

namespace Script
{
	ScriptState::ScriptState(ProgramAccess program)
		: context(std::make_unique<Context>(std::move(program)))
	{
		lua_State* const lua = luaL_newstate();
		HOST_CHECK(lua);
		*static_cast<Context**>(lua_getextraspace(lua)) = context.get(); // coroutines inherit it
		context->main = context->running = lua;
		luaL_openlibs(lua);
		if (context->program.isToEnd)
		{
			openEndHook(lua);
		}
		openExecute(lua);
		openGlobals(lua);
		openJson(lua);
		openPrint(lua);
		openWaiting(lua);
	}

	ScriptState::~ScriptState()
	{
		close();
	}

	bool ScriptState::runFile(const std::string& path, const std::vector<std::string>& arguments)
	{
		lua_State* const lua = context->main;
		lua_createtable(lua, static_cast<int>(arguments.size()), 1);
		lua_pushstring(lua, path.c_str());
		lua_rawseti(lua, -2, 0);
		for (size_t index = 0; index < arguments.size(); ++index)
		{
			lua_pushlstring(lua, arguments[index].data(), arguments[index].size());
			lua_rawseti(lua, -2, static_cast<lua_Integer>(index) + 1);
		}
		lua_setglobal(lua, "arg");
		return run(luaL_loadfilex(lua, path.c_str(), "t"), arguments);
	}

	bool ScriptState::runText(const std::string& text, const std::string& chunkName)
	{
		return run(luaL_loadbufferx(context->main, text.data(), text.size(), ("=" + chunkName).c_str(), "t"), {});
	}

	/** The loaded chunk, or the message why it was not, is the one value on the stack. */
	bool ScriptState::run(int loadStatus, const std::vector<std::string>& arguments)
	{
		lua_State* const lua = context->main;
		int status = loadStatus;
		if (status == LUA_OK)
		{
			lua_pushcfunction(lua, addTraceback);
			lua_insert(lua, 1);
			HOST_CHECK(lua_checkstack(lua, static_cast<int>(arguments.size()) + LUA_MINSTACK));
			for (const std::string& argument : arguments)
			{
				lua_pushlstring(lua, argument.data(), argument.size());
			}
			status = lua_pcall(lua, static_cast<int>(arguments.size()), 0, 1);
		}
		if (status != LUA_OK)
		{
			const char* const message = lua_tostring(lua, -1);
			context->fail(message ? message : "");
		}
		lua_settop(lua, 0);
		return exitStatus() == 0;
	}

	bool ScriptState::hasEnded() const
	{
		return context->hasEnded();
	}

	const std::string& ScriptState::error() const
	{
		return context->error;
	}

	int ScriptState::exitStatus() const
	{
		return context->exitStatus.value_or(context->error.empty() ? 0 : 1);
	}

	std::vector<std::string> ScriptState::warnings() const
	{
		return hasEnded() ? std::vector<std::string>() : context->omissions.describe();
	}

	void ScriptState::close()
	{
		if (!context->main)
		{
			return;
		}
		context->bindings.removeAll();
		context->nodes.releaseAll();
		lua_close(std::exchange(context->main, nullptr));
	}
} // namespace Script
