#pragma once

#include "Lua.h"

namespace Script
{
	/**
	 * Has a script, and the coroutines that it makes, look now and then whether it is to end: then it fails. Loops that do
	 * nothing but count take twice the time, others hardly notice.
	 */
	void openEndHook(lua_State* lua);
} // namespace Script
