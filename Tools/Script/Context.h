#pragma once

#include "Events.h"
#include "Lua.h"
#include "Nodes.h"
#include "Omissions.h"
#include "ScriptState.h"

#include <optional>

namespace Script
{
	/** What the parts of the front end share about one Lua world. Thread: game thread. */
	struct Context
	{
		explicit Context(ProgramAccess programAccess)
			: program(std::move(programAccess))
		{
		}

		static Context& of(lua_State* lua) { return **static_cast<Context**>(lua_getextraspace(lua)); }

		bool isToldToEnd() const { return program.isToEnd && program.isToEnd(); }
		bool hasEnded() const { return !error.empty() || exitStatus.has_value() || isToldToEnd(); }
		/** Remembers an error unless the script has ended by then. */
		void fail(const std::string& message);

		ProgramAccess program;
		lua_State* main = nullptr; // null once closed
		lua_State* running = nullptr; // the coroutine that called into native code; handlers run on it
		int handlerDepth = 0;
		std::string error;
		std::optional<int> exitStatus; // set by os.exit
		EventBindings bindings;
		NodeHolds nodes;
		Omissions omissions;
	};

	/** While it lives, handlers that native code calls run on the coroutine that called this native code. */
	class RunningThread
	{
	public:
		explicit RunningThread(lua_State* lua)
			: context(Context::of(lua))
			, outer(std::exchange(context.running, lua))
		{
		}
		~RunningThread() { context.running = outer; }
		RunningThread(const RunningThread&) = delete;
		RunningThread& operator=(const RunningThread&) = delete;

	private:
		Context& context;
		lua_State* const outer;
	};

	/** @return "function at script.lua:7", the line that called the native function. */
	std::string placeOfCall(lua_State* lua, const std::string& function);

	/** Message handler: turns any error value into text and adds the traceback. */
	int addTraceback(lua_State* lua);
} // namespace Script
