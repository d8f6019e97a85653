#include "Records.h"

#include "InputError.h"
#include "Reflection.h"
#include "UserData.h"

#include <fmt/format.h>

namespace Script
{
	template <>
	const char* const UserData<RecordPointer>::typeName = "record";

	namespace
	{
		std::string typeOf(lua_State* lua)
		{
			return Reflect::typeName(UserData<RecordPointer>::check(lua, 1)->value.type());
		}

		int refuseAccess(lua_State* lua)
		{
			throw Reflect::InputError(fmt::format("records of type {} have no fields that scripts may touch", typeOf(lua)));
		}

		int describeRecord(lua_State* lua)
		{
			lua_pushstring(lua, fmt::format("{} record", typeOf(lua)).c_str());
			return 1;
		}
	} // namespace

	void pushRecord(lua_State* lua, RecordPointer record)
	{
		static constexpr luaL_Reg methods[] = {{"__index", guarded<refuseAccess>}, {"__newindex", guarded<refuseAccess>},
			{"__tostring", guarded<describeRecord>}, {nullptr, nullptr}};
		UserData<RecordPointer>::push(lua, methods, std::move(record));
	}

	const Record* recordAt(lua_State* lua, int index)
	{
		const RecordPointer* const record = UserData<RecordPointer>::test(lua, index);
		return record ? record->get() : nullptr;
	}

	const void* recordAt(lua_State* lua, int index, const FPropertyType& type)
	{
		const Record* const record = recordAt(lua, index);
		return record && record->value.type().Struct() == type.Struct() ? record->value.get() : nullptr;
	}
} // namespace Script
