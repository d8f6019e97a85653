#include "ValueTransfer.h"

#include "Containers/StringConv.h"
#include "InputError.h"
#include "NearestName.h"
#include "Reflection.h"
#include "Value.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace Reflect
{
	namespace
	{
		template <class T>
		T needed(const std::optional<T>& answer, const FPropertyType& type, const Source& source)
		{
			if (!answer)
			{
				source.refuse(type);
			}
			return *answer;
		}

		template <class T>
		void readInteger(const FPropertyType& type, const Source& source, void* value)
		{
			const int64 number = needed(source.integer(), type, source);
			if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max())
			{
				source.refuse(type);
			}
			*static_cast<T*>(value) = static_cast<T>(number);
		}

		void readFloat(const FPropertyType& type, const Source& source, void* value)
		{
			const double number = needed(source.number(), type, source);
			if (std::isfinite(number) && std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
			{
				source.refuse(type);
			}
			*static_cast<float*>(value) = static_cast<float>(number);
		}

		FString readText(const FPropertyType& type, const Source& source)
		{
			const std::string_view text = needed(source.text(), type, source);
			if (text.size() > static_cast<size_t>(MAX_int32))
			{
				throw InputError("text of more than 2 GiB");
			}
			return toFString(text);
		}

		/** Names and moments are looked at up to the first zero: what has one is neither. */
		std::optional<std::string_view> textWithoutZero(const Source& source)
		{
			const std::optional<std::string_view> text = source.text();
			return text && text->find('\0') == text->npos ? text : std::nullopt;
		}

		void readDateTime(const FPropertyType& type, const Source& source, void* value)
		{
			if (!textWithoutZero(source) || !FDateTime::ParseIso8601(*readText(type, source), *static_cast<FDateTime*>(value)))
			{
				source.refuse(type);
			}
		}

		/** Takes the number or the name. Numbers without a name are refused: native code relies on knowing every case. */
		void readEnum(const FPropertyType& type, const Source& source, void* value)
		{
			const std::optional<std::string_view> name = textWithoutZero(source);
			const FEnumerator* const entry = name ? type.Enum()->FindByName(std::string(*name).c_str())
												  : type.Enum()->FindByValue(needed(source.integer(), type, source));
			if (!entry)
			{
				source.refuse(type);
			}
			*static_cast<uint8*>(value) = static_cast<uint8>(entry->Value);
		}

		const FStructField& fieldNamed(const UScriptStruct& owner, const std::optional<std::string_view>& name)
		{
			std::vector<std::string> known;
			for (const FStructField& field : owner.Fields)
			{
				if (name && equalNames(*name, field.Name))
				{
					return field;
				}
				known.emplace_back(field.Name);
			}
			const std::string_view asked = name.value_or("");
			throw InputError(fmt::format("{} has no field '{}'{}", owner.Name, asked, suggestion(asked, known)));
		}

		/** Fields that are not given keep what the type has by default. */
		void readFields(const FPropertyType& type, const Source& source, void* value)
		{
			Value fresh(type);
			const FStructField* field = nullptr;
			const auto readField = [&](const Source& given) { readValue(field->Type(), given, field->Get(fresh.get())); };
			if (!source.map([&](const Source& name) { field = &fieldNamed(*type.Struct(), name.text()); }, readField))
			{
				source.refuse(type);
			}
			type.Assign(value, fresh.get());
		}

		void readRecord(const FPropertyType& type, const Source& source, void* value)
		{
			if (!type.Struct()->Fields.empty())
			{
				return readFields(type, source, value);
			}
			const void* const record = source.record(type);
			if (!record)
			{
				source.refuse(type);
			}
			type.Assign(value, record);
		}

		void readObject(const FPropertyType& type, const Source& source, void* value)
		{
			UObject* const object = needed(source.object(type), type, source);
			std::memcpy(value, &object, sizeof(object)); // declared as a pointer to a derived class, with UObject as its first base
		}

		void readBytes(const FPropertyType& type, const Source& source, void* value)
		{
			const std::string_view bytes = needed(source.text(), type, source);
			if (bytes.size() > static_cast<size_t>(MAX_int32))
			{
				throw InputError("more than 2147483647 bytes");
			}
			TArray<uint8>& array = *static_cast<TArray<uint8>*>(value);
			array.Reset();
			array.Append(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()));
		}

		void readArray(const FPropertyType& type, const Source& source, void* value)
		{
			Value fresh(type);
			if (!source.wholeList(type, fresh.get()) &&
				!source.list([&](const Source& element) { readValue(*type.Inner(), element, type.ArrayAdd(fresh.get())); }))
			{
				source.refuse(type);
			}
			type.Move(value, fresh.get());
		}

		void readMap(const FPropertyType& type, const Source& source, void* value)
		{
			Value fresh(type);
			Value key(*type.Inner());
			if (!source.map([&](const Source& name) { readValue(*type.Inner(), name, key.get()); },
					[&](const Source& mapped) { readValue(*type.Value(), mapped, type.MapAdd(fresh.get(), key.get())); }))
			{
				source.refuse(type);
			}
			type.Move(value, fresh.get());
		}

		void writeText(const FString& text, Sink& sink)
		{
			const FTCHARToUTF8 bytes(*text, text.Len());
			sink.text({bytes.Get(), static_cast<size_t>(bytes.Length())});
		}

		void writeObject(const FPropertyType& type, const void* value, Sink& sink)
		{
			UObject* object = nullptr;
			std::memcpy(&object, value, sizeof(object)); // as in readObject
			sink.object(type, object);
		}

		void writeRecord(const FPropertyType& type, const void* value, Sink& sink)
		{
			if (type.Struct()->Fields.empty())
			{
				return sink.record(type, value);
			}
			sink.newMap();
			for (const FStructField& field : type.Struct()->Fields)
			{
				sink.text(field.Name);
				writeValue(field.Type(), field.Get(const_cast<void*>(value)), sink); // the accessor is for both uses
				sink.addPair();
			}
			sink.endFields(*type.Struct());
		}

		void writeArray(const FPropertyType& type, const void* value, Sink& sink)
		{
			if (isBytes(type))
			{
				const TArray<uint8>& bytes = *static_cast<const TArray<uint8>*>(value);
				return sink.bytes({bytes.GetData(), static_cast<size_t>(bytes.Num())});
			}
			void* const array = const_cast<void*>(value); // the accessor is for both uses; nothing is changed here
			const int32 count = type.ArrayNum(array);
			sink.newList(count);
			for (int32 index = 0; index < count; ++index)
			{
				writeValue(*type.Inner(), type.ArrayAt(array, index), sink);
				sink.addElement(index);
			}
		}

		void writeMap(const FPropertyType& type, const void* value, Sink& sink)
		{
			sink.newMap();
			type.MapVisit(const_cast<void*>(value),
				[&](const void* key, void* mapped)
				{
					writeValue(*type.Inner(), key, sink);
					writeValue(*type.Value(), mapped, sink);
					sink.addPair();
				});
		}
	} // namespace

	void readValue(const FPropertyType& type, const Source& source, void* value)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Bool:
			*static_cast<bool*>(value) = needed(source.boolean(), type, source);
			return;
		case EPropertyKind::Byte:
			return readInteger<uint8>(type, source, value);
		case EPropertyKind::Int:
			return readInteger<int32>(type, source, value);
		case EPropertyKind::Int64:
			return readInteger<int64>(type, source, value);
		case EPropertyKind::Float:
			return readFloat(type, source, value);
		case EPropertyKind::Double:
			*static_cast<double*>(value) = needed(source.number(), type, source);
			return;
		case EPropertyKind::String:
			*static_cast<FString*>(value) = readText(type, source);
			return;
		case EPropertyKind::DateTime:
			return readDateTime(type, source, value);
		case EPropertyKind::Enum:
			return readEnum(type, source, value);
		case EPropertyKind::Struct:
			return readRecord(type, source, value);
		case EPropertyKind::Object:
			return readObject(type, source, value);
		case EPropertyKind::Array:
			return isBytes(type) ? readBytes(type, source, value) : readArray(type, source, value);
		case EPropertyKind::Map:
			return readMap(type, source, value);
		}
	}

	void writeValue(const FPropertyType& type, const void* value, Sink& sink)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Bool:
			return sink.boolean(*static_cast<const bool*>(value));
		case EPropertyKind::Byte:
			return sink.integer(*static_cast<const uint8*>(value));
		case EPropertyKind::Int:
			return sink.integer(*static_cast<const int32*>(value));
		case EPropertyKind::Int64:
			return sink.integer(*static_cast<const int64*>(value));
		case EPropertyKind::Float:
			return sink.number(static_cast<double>(*static_cast<const float*>(value)));
		case EPropertyKind::Double:
			return sink.number(*static_cast<const double*>(value));
		case EPropertyKind::String:
			return writeText(*static_cast<const FString*>(value), sink);
		case EPropertyKind::DateTime:
			return writeText(static_cast<const FDateTime*>(value)->ToIso8601(), sink);
		case EPropertyKind::Enum:
			return sink.enumerator(*type.Enum(), *static_cast<const uint8*>(value));
		case EPropertyKind::Struct:
			return writeRecord(type, value, sink);
		case EPropertyKind::Object:
			return writeObject(type, value, sink);
		case EPropertyKind::Array:
			return writeArray(type, value, sink);
		case EPropertyKind::Map:
			return writeMap(type, value, sink);
		}
	}

	void writeParameter(const FParameter& parameter, const void* value, Sink& sink)
	{
		sink.text(parameter.Name);
		writeValue(parameter.Type(), value, sink);
		sink.addPair();
	}

	void writeParameters(std::span<const FParameter> parameters, void* const* values, Sink& sink)
	{
		sink.newMap();
		for (size_t index = 0; index < parameters.size(); ++index)
		{
			writeParameter(parameters[index], values[index], sink);
		}
	}

	bool isBytes(const FPropertyType& type)
	{
		return type.Kind == EPropertyKind::Array && type.Inner()->Kind == EPropertyKind::Byte;
	}

	FString toFString(std::string_view utf8)
	{
		const FUTF8ToTCHAR units(utf8.data(), static_cast<int32>(utf8.size()));
		return FString::ConstructFromPtrSize(units.Get(), units.Length());
	}

	std::string toUtf8(const FString& text)
	{
		const FTCHARToUTF8 bytes(*text, text.Len());
		return {bytes.Get(), static_cast<size_t>(bytes.Length())};
	}
} // namespace Reflect
