#pragma once

#include "Lua.h"

namespace Script
{
	/**
	 * Makes os.execute hear that the script is to end. C's own leaves Ctrl-C to the other program alone, so a script that
	 * starts one after the other could hardly be ended.
	 */
	void openExecute(lua_State* lua);
} // namespace Script
