#pragma once

#include "Lua.h"
#include "UObject/Class.h"

#include <span>
#include <string>

namespace Script
{
	/**
	 * Prepares the table on top of the stack, which has the values of pins by their names: other spellings of a name are the
	 * same name, and a name that is not there is an error, since as nil it would pass for a value. pairs() sees what it saw.
	 * @param owner  a function or event; stands for the pins. Lives as long as the script.
	 * @param title  what error messages call it.
	 * @param pins  those of them that Accept chooses.
	 */
	void nameFields(
		lua_State* lua, const void* owner, const std::string& title, std::span<const FParameter> pins, bool (*accept)(EParameterKind kind));

	/** The same for a table that has the values of the fields of a struct. */
	void nameFields(lua_State* lua, const UScriptStruct& type);
} // namespace Script
