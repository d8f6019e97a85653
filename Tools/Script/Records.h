#pragma once

#include "Lua.h"
#include "Value.h"

#include <memory>

namespace Script
{
	/** A record that scripts hand on, but cannot look into. It never changes, so all who have it share it. */
	struct Record
	{
		Reflect::Value value;
		uint64 number = 0; // among the omissions of the script
	};

	using RecordPointer = std::shared_ptr<const Record>;

	void pushRecord(lua_State* lua, RecordPointer record);

	/** @return the record at an index, or null when it is something else. */
	const Record* recordAt(lua_State* lua, int index);
	/** @return the address of the record at an index, or null when it is none of that type. */
	const void* recordAt(lua_State* lua, int index, const FPropertyType& type);
} // namespace Script
