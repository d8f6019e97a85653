#include "Objects.h"

#include "Events.h"
#include "FunctionCall.h"
#include "InputError.h"
#include "NearestName.h"
#include "Reflection.h"
#include "UserData.h"

#include <fmt/format.h>

namespace Script
{
	using ObjectReference = TStrongObjectPtr<UObject>;

	template <>
	const char* const UserData<ObjectReference>::typeName = "object";

	namespace
	{
		constexpr const char* cacheName = "object cache"; // registry: object address to user datum, weak

		std::vector<std::string> memberNames(const UClass& type)
		{
			std::vector<std::string> names;
			for (const FMulticastDelegateProperty* event : Reflect::eventsOf(&type))
			{
				names.emplace_back(event->Name);
			}
			for (const Reflect::Function& method : Reflect::methods())
			{
				if (type.IsChildOf(method.owner))
				{
					names.emplace_back(method.function->Name);
				}
			}
			return names;
		}

		int findMember(lua_State* lua)
		{
			UObject* const object = UserData<ObjectReference>::check(lua, 1).Get();
			const UClass& type = *object->GetClass();
			const char* const name = luaL_checkstring(lua, 2);
			if (const FMulticastDelegateProperty* const event = Reflect::findEvent(&type, name))
			{
				pushEvent(lua, *object, *event);
			}
			else if (const Reflect::Function* const method = Reflect::findMethod(type, name))
			{
				pushMethod(lua, *method);
			}
			else
			{
				throw Reflect::InputError(
					fmt::format("{} has no event or function '{}'{}", type.GetName(), name, Reflect::suggestion(name, memberNames(type))));
			}
			return 1;
		}

		int refuseField(lua_State* lua)
		{
			const UObject* const object = UserData<ObjectReference>::check(lua, 1).Get();
			throw Reflect::InputError(fmt::format("{} has no field that scripts may set", object->GetClass()->GetName()));
		}

		int describeObject(lua_State* lua)
		{
			const UObject* const object = UserData<ObjectReference>::check(lua, 1).Get();
			lua_pushstring(lua, fmt::format("{} object", object->GetClass()->GetName()).c_str());
			return 1;
		}

		void pushCache(lua_State* lua)
		{
			if (!luaL_getsubtable(lua, LUA_REGISTRYINDEX, cacheName))
			{
				lua_createtable(lua, 0, 1);
				lua_pushstring(lua, "v");
				lua_setfield(lua, -2, "__mode");
				lua_setmetatable(lua, -2);
			}
		}
	} // namespace

	void pushObject(lua_State* lua, UObject* object)
	{
		static constexpr luaL_Reg methods[] = {{"__index", guarded<findMember>}, {"__newindex", guarded<refuseField>},
			{"__tostring", guarded<describeObject>}, {nullptr, nullptr}};

		ObjectReference reference(object);
		if (!reference)
		{
			lua_pushnil(lua); // null, or on the way out: nobody can hold it any more
			return;
		}
		luaL_checkstack(lua, 6, nullptr);
		pushCache(lua);
		if (lua_rawgetp(lua, -1, object) == LUA_TNIL)
		{
			lua_pop(lua, 1);
			UserData<ObjectReference>::push(lua, methods, std::move(reference));
			lua_pushvalue(lua, -1);
			lua_rawsetp(lua, -3, object);
		}
		lua_remove(lua, -2);
	}

	std::optional<UObject*> objectAt(lua_State* lua, int index, const UClass& type)
	{
		const ObjectReference* const reference = UserData<ObjectReference>::test(lua, index);
		const bool fits = reference ? reference->Get()->IsA(&type) : lua_isnil(lua, index);
		return fits ? std::optional(reference ? reference->Get() : nullptr) : std::nullopt;
	}
} // namespace Script
