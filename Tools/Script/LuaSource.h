#pragma once

#include "Lua.h"
#include "Objects.h"
#include "RecordList.h"
#include "ValueTransfer.h"

namespace Script
{
	/** A value on Lua's stack. Numbers are no text here, unlike in Lua's own functions: a wrong pin should not pass unseen. */
	class LuaSource : public Reflect::Source
	{
	public:
		/** @param stackIndex  absolute. */
		LuaSource(lua_State* luaState, int stackIndex)
			: lua(luaState)
			, index(stackIndex)
		{
		}

		std::optional<bool> boolean() const override;
		/** A float is taken as well when it is a whole number. */
		std::optional<int64> integer() const override;
		std::optional<double> number() const override;
		std::optional<std::string_view> text() const override;
		const void* record(const FPropertyType& type) const override { return recordAt(lua, index, type); }
		bool wholeList(const FPropertyType& type, void* array) const override;
		std::optional<UObject*> object(const FPropertyType& type) const override { return objectAt(lua, index, *type.Class()); }
		/** Refuses a table that has other keys than the places of a list. */
		bool list(const Visitor& element) const override;
		/** A table in the first place tells a list of pairs from a map, since the values of maps are never tables. */
		bool map(const Visitor& key, const Visitor& value) const override;
		[[noreturn]] void refuse(const FPropertyType& expected) const override;

	private:
		bool table(const Visitor& key, const Visitor& value) const;
		bool pairs(const Visitor& key, const Visitor& value) const;

		lua_State* const lua;
		const int index;
	};
} // namespace Script
