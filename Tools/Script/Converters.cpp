#include "Converters.h"

#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"
#include "Misc/DateTime.h"
#include "Reflection.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

namespace Script
{
	namespace
	{
		/** The value as an error message shows it: small values themselves, else their type. */
		std::string describe(lua_State* lua, int index)
		{
			constexpr size_t longestQuote = 40;

			const int type = lua_type(lua, index);
			if (type == LUA_TNUMBER)
			{
				lua_pushvalue(lua, index); // lua_tolstring would turn the value itself into text
				const std::string number = lua_tostring(lua, -1);
				lua_pop(lua, 1);
				return number;
			}
			size_t size = 0;
			const char* text = type == LUA_TSTRING ? lua_tolstring(lua, index, &size) : nullptr;
			if (text && size <= longestQuote)
			{
				return fmt::format("string '{}'", std::string_view(text, size));
			}
			return luaL_typename(lua, index);
		}

		std::string expectation(const FPropertyType& type)
		{
			switch (type.Kind)
			{
			case EPropertyKind::Byte:
				return "uint8 (0 to 255)";
			case EPropertyKind::Int:
				return "int32 (-2147483648 to 2147483647)";
			case EPropertyKind::Int64:
				return "int64 (a whole number)";
			default:
				return typeName(type);
			}
		}

		void pushBool(lua_State* lua, const FPropertyType&, const void* value)
		{
			lua_pushboolean(lua, *static_cast<const bool*>(value));
		}

		void readBool(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			if (!lua_isboolean(lua, index))
			{
				refuseValue(lua, index, type);
			}
			*static_cast<bool*>(value) = lua_toboolean(lua, index) != 0;
		}

		template <class T>
		void pushInteger(lua_State* lua, const FPropertyType&, const void* value)
		{
			lua_pushinteger(lua, *static_cast<const T*>(value));
		}

		/** A float is taken as well when it is a whole number. */
		template <class T>
		void readInteger(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			int isInteger = 0;
			const lua_Integer number = lua_type(lua, index) == LUA_TNUMBER ? lua_tointegerx(lua, index, &isInteger) : 0;
			if (!isInteger || number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max())
			{
				refuseValue(lua, index, type);
			}
			*static_cast<T*>(value) = static_cast<T>(number);
		}

		void pushFloat(lua_State* lua, const FPropertyType&, const void* value)
		{
			lua_pushnumber(lua, static_cast<lua_Number>(*static_cast<const float*>(value)));
		}

		void readFloat(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			const lua_Number number = lua_tonumber(lua, index);
			const bool isTooLarge = std::isfinite(number) && std::abs(number) > static_cast<lua_Number>(std::numeric_limits<float>::max());
			if (lua_type(lua, index) != LUA_TNUMBER || isTooLarge)
			{
				refuseValue(lua, index, type);
			}
			*static_cast<float*>(value) = static_cast<float>(number);
		}

		void pushString(lua_State* lua, const FPropertyType&, const void* value)
		{
			const FString& text = *static_cast<const FString*>(value);
			const FTCHARToUTF8 bytes(*text, text.Len());
			lua_pushlstring(lua, bytes.Get(), static_cast<size_t>(bytes.Length()));
		}

		/** Numbers are no text here, unlike in Lua's own functions: a wrong pin should not pass unseen. */
		void readString(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			if (lua_type(lua, index) != LUA_TSTRING)
			{
				refuseValue(lua, index, type);
			}
			size_t size = 0;
			const char* bytes = lua_tolstring(lua, index, &size);
			if (size > static_cast<size_t>(MAX_int32))
			{
				throw ScriptError("text of more than 2 GiB");
			}
			const FUTF8ToTCHAR units(bytes, static_cast<int32>(size));
			*static_cast<FString*>(value) = FString::ConstructFromPtrSize(units.Get(), units.Length());
		}

		void pushDateTime(lua_State* lua, const FPropertyType& type, const void* value)
		{
			const FString text = static_cast<const FDateTime*>(value)->ToIso8601();
			pushString(lua, type, &text);
		}

		void readDateTime(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			FString text;
			readString(lua, index, type, &text);
			if (!FDateTime::ParseIso8601(*text, *static_cast<FDateTime*>(value)))
			{
				refuseValue(lua, index, type);
			}
		}

		/** Takes the number or the name. Numbers without a name are refused: native code relies on knowing every case. */
		void readEnum(lua_State* lua, int index, const FPropertyType& type, void* value)
		{
			const FEnumerator* entry = nullptr;
			if (lua_type(lua, index) == LUA_TSTRING)
			{
				entry = type.Enum()->FindByName(lua_tostring(lua, index));
			}
			else if (lua_isinteger(lua, index))
			{
				entry = type.Enum()->FindByValue(lua_tointeger(lua, index));
			}
			if (!entry)
			{
				refuseValue(lua, index, type);
			}
			*static_cast<uint8*>(value) = static_cast<uint8>(entry->Value);
		}

		const Converter& converterFor(const FPropertyType& type)
		{
			static const Converter converters[] = {
				{pushBool, readBool},
				{pushInteger<uint8>, readInteger<uint8>},
				{pushInteger<int32>, readInteger<int32>},
				{pushInteger<int64>, readInteger<int64>},
				{pushFloat, readFloat},
				{pushString, readString},
				{pushDateTime, readDateTime},
				{pushInteger<uint8>, readEnum},
				recordConverter,
				objectConverter,
				arrayConverter,
				mapConverter,
			};
			static_assert(std::size(converters) == static_cast<size_t>(EPropertyKind::Map) + 1, "one converter per kind, in their order");

			const bool isByteArray = type.Kind == EPropertyKind::Array && type.Inner()->Kind == EPropertyKind::Byte;
			return isByteArray ? byteArrayConverter : converters[static_cast<size_t>(type.Kind)];
		}
	} // namespace

	void pushValue(lua_State* lua, const FPropertyType& type, const void* value)
	{
		converterFor(type).push(lua, type, value);
	}

	void readValue(lua_State* lua, int index, const FPropertyType& type, void* value)
	{
		converterFor(type).read(lua, index, type, value);
	}

	void refuseValue(lua_State* lua, int index, const FPropertyType& type)
	{
		throw ScriptError(fmt::format("expected {}, got {}", expectation(type), describe(lua, index)));
	}
} // namespace Script
