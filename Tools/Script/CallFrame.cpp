#include "CallFrame.h"

#include "Containers/StringConv.h"

#include <charconv>
#include <cstring>

namespace Script
{
	namespace
	{
		template <class T>
		void setNumber(const char* text, void* value)
		{
			T& number = *static_cast<T*>(value);
			const std::from_chars_result result = std::from_chars(text, text + std::strlen(text), number);
			HOST_CHECK(result.ec == std::errc()); // the header tool let a wrong default pass
		}

		void setEnum(const UEnum& enumeration, const char* text, void* value)
		{
			const FEnumerator* entry = enumeration.FindByName(text);
			HOST_CHECK(entry);
			*static_cast<uint8*>(value) = static_cast<uint8>(entry->Value);
		}

		/** Sets a value to a default as it was declared. Kinds without a case have no default that could be declared. */
		void setDefault(const FPropertyType& type, const char* text, void* value)
		{
			switch (type.Kind)
			{
			case EPropertyKind::Bool:
				*static_cast<bool*>(value) = std::strcmp(text, "true") == 0;
				break;
			case EPropertyKind::Byte:
				setNumber<uint8>(text, value);
				break;
			case EPropertyKind::Int:
				setNumber<int32>(text, value);
				break;
			case EPropertyKind::Int64:
				setNumber<int64>(text, value);
				break;
			case EPropertyKind::Float:
				setNumber<float>(text, value);
				break;
			case EPropertyKind::String:
			{
				const FUTF8ToTCHAR units(text, static_cast<int32>(std::strlen(text)));
				*static_cast<FString*>(value) = FString::ConstructFromPtrSize(units.Get(), units.Length());
				break;
			}
			case EPropertyKind::Enum:
				setEnum(*type.Enum(), text, value);
				break;
			default:
				break;
			}
		}
	} // namespace

	CallFrame::CallFrame(const UFunction& calledFunction)
		: function(calledFunction)
	{
		arguments.reserve(function.Parameters.size());
		for (const FParameter& declared : function.Parameters)
		{
			const Value& value = arguments.emplace_back(declared.Type());
			if (declared.Default)
			{
				setDefault(value.type(), declared.Default, value.get());
			}
		}
	}

	template <class Accept>
	std::optional<size_t> CallFrame::find(std::string_view pin, Accept accepts) const
	{
		for (size_t index = 0; index < size(); ++index)
		{
			if (accepts(parameter(index).Kind) && equalNames(parameter(index).Name, pin))
			{
				return index;
			}
		}
		return std::nullopt;
	}

	std::optional<size_t> CallFrame::findInput(std::string_view pin) const
	{
		return find(pin, isInput);
	}

	std::optional<size_t> CallFrame::findOutput(std::string_view pin) const
	{
		return find(pin, isOutput);
	}

	void CallFrame::invoke()
	{
		std::vector<void*> addresses;
		for (const Value& argument : arguments)
		{
			addresses.push_back(argument.get());
		}
		function.Invoke(nullptr, addresses.data());
	}
} // namespace Script
