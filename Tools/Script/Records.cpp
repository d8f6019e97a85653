#include "Converters.h"
#include "Reflection.h"
#include "UserData.h"
#include "Value.h"

#include <fmt/format.h>

namespace Script
{
	template <>
	const char* const UserData<Value>::typeName = "record";

	namespace
	{
		int refuseAccess(lua_State* lua)
		{
			const Value& record = UserData<Value>::check(lua, 1);
			throw ScriptError(fmt::format("records of type {} have no fields that scripts may touch", typeName(record.type())));
		}

		int describe(lua_State* lua)
		{
			const Value& record = UserData<Value>::check(lua, 1);
			lua_pushstring(lua, fmt::format("{} record", typeName(record.type())).c_str());
			return 1;
		}

		void pushRecord(lua_State* lua, const FPropertyType& type, const void* value)
		{
			static constexpr luaL_Reg methods[] = {{"__index", guarded<refuseAccess>}, {"__newindex", guarded<refuseAccess>},
				{"__tostring", guarded<describe>}, {nullptr, nullptr}};
			UserData<Value>::push(lua, methods, Value(type, value));
		}

		void readRecord(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			const Value* record = UserData<Value>::test(lua, index);
			if (!record || record->type().Struct() != type.Struct())
			{
				refuseValue(lua, index, type);
			}
			type.Assign(value, record->get());
		}
	} // namespace

	const Converter recordConverter{pushRecord, readRecord};
} // namespace Script
