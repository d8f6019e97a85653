#include "Waiting.h"

#include "Context.h"
#include "InputError.h"

#include <fmt/format.h>

#include <algorithm>

namespace Script
{
	namespace
	{
		constexpr lua_Number longestWaitSeconds = 1e8; // three years; keeps clock arithmetic from overflowing

		void refuseInHandler(const Context& context, const char* function)
		{
			if (context.handlerDepth > 0)
			{
				throw Reflect::InputError(fmt::format("{} may not be called inside an event handler", function));
			}
		}

		void refuseAfterEnd(const Context& context)
		{
			if (context.hasEnded())
			{
				throw Reflect::InputError("the script was ended by a handler");
			}
		}

		/** @return seconds that the loop can count; nothing is waited for when they are no number or negative. */
		double countable(lua_Number seconds)
		{
			return seconds > 0 ? std::min(seconds, longestWaitSeconds) : 0;
		}

		int wait(lua_State* lua)
		{
			Context& context = Context::of(lua);
			luaL_checktype(lua, 1, LUA_TFUNCTION);
			const lua_Number seconds = luaL_checknumber(lua, 2);
			refuseInHandler(context, "wait");
			const RunningThread running(lua);
			// An error of the condition passes through the loop as the exception it is, so its traceback is whole.
			const auto condition = [lua, &context]
			{
				if (context.hasEnded())
				{
					return true;
				}
				lua_pushvalue(lua, 1);
				lua_call(lua, 0, 1);
				const bool holds = lua_toboolean(lua, -1) != 0;
				lua_pop(lua, 1);
				return holds;
			};
			const bool held = context.program.waitFor(condition, countable(seconds));
			refuseAfterEnd(context);
			lua_pushboolean(lua, held);
			return 1;
		}

		int sleep(lua_State* lua)
		{
			Context& context = Context::of(lua);
			const lua_Number seconds = luaL_checknumber(lua, 1);
			refuseInHandler(context, "sleep");
			const RunningThread running(lua);
			context.program.waitFor([&context] { return context.hasEnded(); }, countable(seconds));
			refuseAfterEnd(context);
			return 0;
		}

		int tick(lua_State* lua)
		{
			Context& context = Context::of(lua);
			refuseInHandler(context, "tick");
			const RunningThread running(lua);
			context.program.tick();
			refuseAfterEnd(context);
			return 0;
		}

		/** C's exit would tear the process down under the threads that still run. */
		int exitScript(lua_State* lua)
		{
			Context& context = Context::of(lua);
			const bool isFlag = lua_isnoneornil(lua, 1) || lua_isboolean(lua, 1);
			const lua_Integer status = isFlag ? (lua_isboolean(lua, 1) && !lua_toboolean(lua, 1)) : luaL_checkinteger(lua, 1);
			if (!context.hasEnded())
			{
				context.exitStatus = static_cast<int>(status & 0xFF);
			}
			throw Reflect::InputError("os.exit was called");
		}
	} // namespace

	void openWaiting(lua_State* lua)
	{
		lua_register(lua, "wait", guarded<wait>);
		lua_register(lua, "sleep", guarded<sleep>);
		lua_register(lua, "tick", guarded<tick>);
		lua_getglobal(lua, "os");
		lua_pushcfunction(lua, guarded<exitScript>);
		lua_setfield(lua, -2, "exit");
		lua_pop(lua, 1);
	}
} // namespace Script
