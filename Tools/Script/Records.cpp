#include "Records.h"

#include "InputError.h"
#include "Reflection.h"
#include "UserData.h"
#include "Value.h"

#include <fmt/format.h>

namespace Script
{
	using Reflect::Value;

	template <>
	const char* const UserData<Value>::typeName = "record";

	namespace
	{
		int refuseAccess(lua_State* lua)
		{
			const Value& record = UserData<Value>::check(lua, 1);
			throw Reflect::InputError(
				fmt::format("records of type {} have no fields that scripts may touch", Reflect::typeName(record.type())));
		}

		int describe(lua_State* lua)
		{
			const Value& record = UserData<Value>::check(lua, 1);
			lua_pushstring(lua, fmt::format("{} record", Reflect::typeName(record.type())).c_str());
			return 1;
		}
	} // namespace

	void pushRecord(lua_State* lua, const FPropertyType& type, const void* value)
	{
		static constexpr luaL_Reg methods[] = {{"__index", guarded<refuseAccess>}, {"__newindex", guarded<refuseAccess>},
			{"__tostring", guarded<describe>}, {nullptr, nullptr}};
		UserData<Value>::push(lua, methods, Value(type, value));
	}

	const void* recordAt(lua_State* lua, int index, const FPropertyType& type)
	{
		const Value* const record = UserData<Value>::test(lua, index);
		return record && record->type().Struct() == type.Struct() ? record->get() : nullptr;
	}
} // namespace Script
