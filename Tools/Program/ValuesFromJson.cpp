#include "JsonValues.h"

#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"
#include "Misc/DateTime.h"
#include "NearestName.h"
#include "Reflection.h"
#include "ScriptError.h"
#include "Value.h"

#include <fmt/format.h>

#include <limits>

namespace Program
{
	namespace
	{
		using Script::ScriptError;

		FString stringOf(const std::string& text)
		{
			const FUTF8ToTCHAR units(text.data(), static_cast<int32>(text.size()));
			return FString::ConstructFromPtrSize(units.Get(), units.Length());
		}

		/** The value as messages show it; a word that is no UTF-8 is shown, too. */
		std::string shown(const Json& json)
		{
			return json.dump(-1, ' ', false, Json::error_handler_t::replace);
		}

		[[noreturn]] void refuse(const FPropertyType& type, const Json& json)
		{
			throw ScriptError(fmt::format("expected {}, got {}", Script::typeName(type), shown(json)));
		}

		/** @return the word as a text when it is no JSON. */
		Json parse(const std::string& word)
		{
			static constexpr int mostDepth = 16; // values that scripts hold need two
			const auto check = [](int depth, Json::parse_event_t, const Json&)
			{
				if (depth > mostDepth)
				{
					throw ScriptError(fmt::format("brackets may not stand more than {} deep in one another", mostDepth));
				}
				return true;
			};
			const Json parsed = Json::parse(word, check, false);
			return parsed.is_discarded() ? Json(word) : parsed;
		}

		template <class T>
		void readInteger(const Json& json, const FPropertyType& type, void* value)
		{
			const bool isTooLarge = json.is_number_unsigned() && json.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX);
			const int64 number = json.is_number_integer() && !isTooLarge ? json.get<int64>() : 0;
			if (!json.is_number_integer() || isTooLarge || number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max())
			{
				refuse(type, json);
			}
			*static_cast<T*>(value) = static_cast<T>(number);
		}

		[[noreturn]] void refuseEnum(const FPropertyType& type, const Json& json)
		{
			std::vector<std::string> names;
			for (const FEnumerator& entry : type.Enum()->Enumerators)
			{
				names.emplace_back(entry.Name);
			}
			const std::string nearest = json.is_string() ? Script::suggestion(json.get_ref<const std::string&>(), names) : "";
			throw ScriptError(fmt::format("expected {}, got {}{}", Script::typeName(type), shown(json), nearest));
		}

		void readEnum(const Json& json, const FPropertyType& type, void* value)
		{
			const FEnumerator* entry = nullptr;
			if (json.is_string())
			{
				entry = type.Enum()->FindByName(json.get_ref<const std::string&>().c_str());
			}
			else if (json.is_number_integer())
			{
				entry = type.Enum()->FindByValue(json.get<int64>());
			}
			if (!entry)
			{
				refuseEnum(type, json);
			}
			*static_cast<uint8*>(value) = static_cast<uint8>(entry->Value);
		}

		void readDateTime(const Json& json, const FPropertyType& type, void* value)
		{
			if (!json.is_string() ||
				!FDateTime::ParseIso8601(*stringOf(json.get_ref<const std::string&>()), *static_cast<FDateTime*>(value)))
			{
				refuse(type, json);
			}
		}

		void fromJson(const Json& json, const FPropertyType& type, void* value);

		void readArray(const Json& json, const FPropertyType& type, void* value)
		{
			if (!json.is_array())
			{
				refuse(type, json);
			}
			Script::Value fresh(type);
			for (const Json& element : json)
			{
				fromJson(element, *type.Inner(), type.ArrayAdd(fresh.get()));
			}
			type.Assign(value, fresh.get());
		}

		void addPair(const Json& key, const Json& mapped, const FPropertyType& type, void* map)
		{
			Script::Value name(*type.Inner());
			fromJson(key, *type.Inner(), name.get());
			fromJson(mapped, *type.Value(), type.MapAdd(map, name.get()));
		}

		void readMap(const Json& json, const FPropertyType& type, void* value)
		{
			Script::Value fresh(type);
			if (json.is_object())
			{
				for (const auto& [key, mapped] : json.items())
				{
					addPair(key, mapped, type, fresh.get());
				}
			}
			else
			{
				for (const Json& pair : json.is_array() ? json : Json::array({json}))
				{
					if (!pair.is_array() || pair.size() != 2)
					{
						refuse(type, json);
					}
					addPair(pair[0], pair[1], type, fresh.get());
				}
			}
			type.Assign(value, fresh.get());
		}

		void fromJson(const Json& json, const FPropertyType& type, void* value)
		{
			switch (type.Kind)
			{
			case EPropertyKind::Bool:
				json.is_boolean() ? void(*static_cast<bool*>(value) = json.get<bool>()) : refuse(type, json);
				break;
			case EPropertyKind::Byte:
				readInteger<uint8>(json, type, value);
				break;
			case EPropertyKind::Int:
				readInteger<int32>(json, type, value);
				break;
			case EPropertyKind::Int64:
				readInteger<int64>(json, type, value);
				break;
			case EPropertyKind::Float:
				json.is_number() ? void(*static_cast<float*>(value) = json.get<float>()) : refuse(type, json);
				break;
			case EPropertyKind::String:
				json.is_string() ? void(*static_cast<FString*>(value) = stringOf(json.get<std::string>())) : refuse(type, json);
				break;
			case EPropertyKind::DateTime:
				readDateTime(json, type, value);
				break;
			case EPropertyKind::Enum:
				readEnum(json, type, value);
				break;
			case EPropertyKind::Array:
				readArray(json, type, value);
				break;
			case EPropertyKind::Map:
				readMap(json, type, value);
				break;
			case EPropertyKind::Struct:
			case EPropertyKind::Object:
				throw ScriptError(fmt::format("a {} cannot be written on a command line", Script::typeName(type)));
			}
		}
	} // namespace

	void fromWord(const std::string& word, const FPropertyType& type, void* value)
	{
		const bool isBytes = type.Kind == EPropertyKind::Array && type.Inner()->Kind == EPropertyKind::Byte;
		if (isBytes)
		{
			TArray<uint8>& bytes = *static_cast<TArray<uint8>*>(value);
			bytes.Reset();
			bytes.Append(reinterpret_cast<const uint8*>(word.data()), static_cast<int32>(word.size()));
			return;
		}
		fromJson(type.Kind == EPropertyKind::String ? Json(word) : parse(word), type, value);
	}
} // namespace Program
