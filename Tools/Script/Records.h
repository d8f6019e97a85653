#pragma once

#include "Lua.h"
#include "UObject/PropertyType.h"

namespace Script
{
	/** Pushes a copy of a record. Scripts hand it on, but cannot look into it. */
	void pushRecord(lua_State* lua, const FPropertyType& type, const void* value);

	/** @return the address of the record at an index, or null when it is none of that type. */
	const void* recordAt(lua_State* lua, int index, const FPropertyType& type);
} // namespace Script
