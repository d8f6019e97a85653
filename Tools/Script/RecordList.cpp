#include "RecordList.h"

#include "InputError.h"
#include "Reflection.h"
#include "UserData.h"

#include <fmt/format.h>

namespace Script
{
	template <>
	const char* const UserData<RecordList>::typeName = "list of records";

	namespace
	{
		int getElement(lua_State* lua)
		{
			const RecordList& list = UserData<RecordList>::check(lua, 1);
			int isInteger = 0;
			const lua_Integer place = lua_tointegerx(lua, 2, &isInteger);
			const bool isThere = isInteger && place >= 1 && place <= list.size();
			isThere ? pushRecord(lua, list[static_cast<int32>(place) - 1]) : lua_pushnil(lua);
			return 1;
		}

		int refuseElement(lua_State*)
		{
			throw Reflect::InputError("a list of records does not change; { table.unpack(list) } makes a table of them");
		}

		int getLength(lua_State* lua)
		{
			lua_pushinteger(lua, UserData<RecordList>::check(lua, 1).size());
			return 1;
		}

		int describeList(lua_State* lua)
		{
			const RecordList& list = UserData<RecordList>::check(lua, 1);
			lua_pushstring(lua, Reflect::typeName(list.type()).c_str());
			return 1;
		}

		int getNext(lua_State* lua)
		{
			lua_pushinteger(lua, luaL_checkinteger(lua, 2) + 1);
			lua_copy(lua, -1, 2);
			getElement(lua);
			return lua_isnil(lua, -1) ? 1 : 2; // nil alone ends the loop
		}

		int beginPairs(lua_State* lua)
		{
			lua_pushcfunction(lua, guarded<getNext>);
			lua_pushvalue(lua, 1);
			lua_pushinteger(lua, 0);
			return 3;
		}
	} // namespace

	RecordList RecordList::take(
		const FPropertyType& type, void* array, const RecordList* given, Omissions& omissions, const std::string& place)
	{
		const int32 total = type.ArrayNum(array);
		const bool hasGrown = given && &given->type() == &type && given->count <= total;
		RecordList list;
		list.count = total;
		if (hasGrown && given->isNewest())
		{
			list.shared = given->shared;
		}
		else
		{
			list.shared = std::make_shared<Shared>(Shared{type, {}, std::nullopt});
			if (hasGrown)
			{
				const auto begin = given->shared->records.begin();
				list.shared->records.assign(begin, begin + given->count);
			}
		}
		std::vector<RecordPointer>& records = list.shared->records;
		for (int32 index = static_cast<int32>(records.size()); index < total; ++index)
		{
			Reflect::Value value(*type.Inner(), type.ArrayAt(array, index));
			records.push_back(std::make_shared<Record>(Record{std::move(value), omissions.noteBuilt(place)}));
		}
		type.Move(list.shared->array.emplace(type).get(), array);
		return list;
	}

	void RecordList::giveTo(void* array) const
	{
		const FPropertyType& type = shared->type;
		if (isNewest() && shared->array)
		{
			type.Move(array, shared->array->get());
			shared->array.reset();
			return;
		}
		for (int32 index = 0; index < count; ++index)
		{
			type.Inner()->Assign(type.ArrayAdd(array), (*this)[index]->value.get());
		}
	}

	bool isRecordList(const FPropertyType& type)
	{
		return type.Kind == EPropertyKind::Array && type.Inner()->Kind == EPropertyKind::Struct;
	}

	void pushRecordList(lua_State* lua, RecordList list)
	{
		static constexpr luaL_Reg methods[] = {{"__index", guarded<getElement>}, {"__newindex", guarded<refuseElement>},
			{"__len", guarded<getLength>}, {"__pairs", beginPairs}, {"__tostring", guarded<describeList>}, {nullptr, nullptr}};
		UserData<RecordList>::push(lua, methods, std::move(list));
	}

	const RecordList* recordListAt(lua_State* lua, int index)
	{
		return UserData<RecordList>::test(lua, index);
	}
} // namespace Script
