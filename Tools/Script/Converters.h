#pragma once

#include "Lua.h"
#include "UObject/PropertyType.h"

#include <string>

namespace Script
{
	/** How values of one property kind cross the border. */
	struct Converter
	{
		/** Pushes one Lua value. */
		void (*push)(lua_State* lua, const FPropertyType& type, const void* value);
		/** Sets *value from the Lua value at an absolute index. Throws ScriptError when that is no such value. */
		void (*read)(lua_State* lua, int index, const FPropertyType& type, void* value);
	};

	void pushValue(lua_State* lua, const FPropertyType& type, const void* value);
	/** @param index  absolute. Throws ScriptError: "expected int32, got string". */
	void readValue(lua_State* lua, int index, const FPropertyType& type, void* value);

	/** Throws the error for a value of the wrong type, or one that its type cannot hold. */
	[[noreturn]] void refuseValue(lua_State* lua, int index, const FPropertyType& type);

	extern const Converter arrayConverter;
	extern const Converter byteArrayConverter;
	extern const Converter mapConverter;
	extern const Converter recordConverter;
	extern const Converter objectConverter;
} // namespace Script
