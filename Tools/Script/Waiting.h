#pragma once

#include "Lua.h"

namespace Script
{
	/** Sets the globals wait, sleep and tick, and makes os.exit end the script instead of the process. */
	void openWaiting(lua_State* lua);
} // namespace Script
