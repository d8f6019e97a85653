#include "JsonValues.h"

#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"
#include "Misc/DateTime.h"
#include "Reflection.h"

#include <fmt/format.h>

#include <cstring>

namespace Program
{
	namespace
	{
		bool isBytes(const FPropertyType& type)
		{
			return type.Kind == EPropertyKind::Array && type.Inner()->Kind == EPropertyKind::Byte;
		}

		std::string textOf(const FString& text)
		{
			const FTCHARToUTF8 bytes(*text, text.Len());
			return std::string(bytes.Get(), static_cast<size_t>(bytes.Length()));
		}

		Json arrayToJson(const FPropertyType& type, const void* value)
		{
			if (isBytes(type))
			{
				const TArray<uint8>& bytes = *static_cast<const TArray<uint8>*>(value);
				return Json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
			}
			void* const array = const_cast<void*>(value); // the accessor is for both uses; nothing is changed here
			Json list = Json::array();
			for (int32 index = 0; index < type.ArrayNum(array); ++index)
			{
				list.push_back(toJson(*type.Inner(), type.ArrayAt(array, index)));
			}
			return list;
		}

		Json mapToJson(const FPropertyType& type, const void* value)
		{
			Json map = Json::object();
			type.MapVisit(const_cast<void*>(value),
				[&](const void* key, void* mapped)
				{
					const Json name = toJson(*type.Inner(), key);
					map[name.is_string() ? name.get<std::string>() : name.dump()] = toJson(*type.Value(), mapped);
				});
			return map;
		}

		Json objectToJson(const FPropertyType& type, const void* value)
		{
			const void* object = nullptr;
			std::memcpy(&object, value, sizeof(object));
			return object ? Json(fmt::format("<{}>", type.Class()->GetName())) : Json();
		}

	} // namespace

	Json toJson(const FPropertyType& type, const void* value)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Bool:
			return *static_cast<const bool*>(value);
		case EPropertyKind::Byte:
			return *static_cast<const uint8*>(value);
		case EPropertyKind::Int:
			return *static_cast<const int32*>(value);
		case EPropertyKind::Int64:
			return *static_cast<const int64*>(value);
		case EPropertyKind::Float:
			return *static_cast<const float*>(value);
		case EPropertyKind::String:
			return textOf(*static_cast<const FString*>(value));
		case EPropertyKind::DateTime:
			return textOf(static_cast<const FDateTime*>(value)->ToIso8601());
		case EPropertyKind::Enum:
		{
			const uint8 number = *static_cast<const uint8*>(value);
			const FEnumerator* const entry = type.Enum()->FindByValue(number);
			return entry ? Json(entry->Name) : Json(number);
		}
		case EPropertyKind::Struct:
			return fmt::format("<{}>", type.Struct()->Name);
		case EPropertyKind::Object:
			return objectToJson(type, value);
		case EPropertyKind::Array:
			return arrayToJson(type, value);
		case EPropertyKind::Map:
			return mapToJson(type, value);
		}
		return {};
	}

	Json toJson(std::span<const FParameter> parameters, void* const* values)
	{
		Json pins = Json::object();
		for (size_t index = 0; index < parameters.size(); ++index)
		{
			pins[parameters[index].Name] = toJson(parameters[index].Type(), values[index]);
		}
		return pins;
	}
} // namespace Program
