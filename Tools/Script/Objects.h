#pragma once

#include "Lua.h"
#include "UObject/StrongObjectPtr.h"

namespace Script
{
	/**
	 * Pushes a script's view of an object, nil for null. The same object is the same Lua value, and is held strongly while
	 * Lua holds that value, as an engine's script variable would.
	 */
	void pushObject(lua_State* lua, UObject* object);
} // namespace Script
