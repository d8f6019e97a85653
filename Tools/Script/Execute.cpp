#include "Execute.h"

#include "Context.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Script
{
	namespace
	{
		/** @return as waitpid tells it; -1 with errno when there is nothing to wait for. */
		int waitFor(pid_t program, const Context& context)
		{
			int status = 0;
			while (waitpid(program, &status, 0) < 0)
			{
				if (errno != EINTR)
				{
					return -1;
				}
				if (context.isToldToEnd())
				{
					kill(program, SIGTERM);
				}
			}
			return status;
		}

		int execute(lua_State* lua)
		{
			const char* const command = luaL_optstring(lua, 1, nullptr);
			if (!command)
			{
				lua_pushboolean(lua, true); // there is a shell
				return 1;
			}
			const char* const words[] = {"sh", "-c", command, nullptr};
			pid_t program = 0;
			errno = posix_spawn(&program, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(words), environ);
			return luaL_execresult(lua, errno == 0 ? waitFor(program, Context::of(lua)) : -1);
		}
	} // namespace

	void openExecute(lua_State* lua)
	{
		lua_getglobal(lua, "os");
		lua_pushcfunction(lua, execute);
		lua_setfield(lua, -2, "execute");
		lua_pop(lua, 1);
	}
} // namespace Script
