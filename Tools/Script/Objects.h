#pragma once

#include "Lua.h"
#include "UObject/StrongObjectPtr.h"

#include <optional>

namespace Script
{
	/**
	 * Pushes a script's view of an object, nil for null. The same object is the same Lua value, and is held strongly while
	 * Lua holds that value, as an engine's script variable would.
	 */
	void pushObject(lua_State* lua, UObject* object);

	/** @return the object at an index when it is one of a class, or null for nil; else nothing. */
	std::optional<UObject*> objectAt(lua_State* lua, int index, const UClass& type);
} // namespace Script
