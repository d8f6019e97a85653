#include "Graph/PinTypes.h"

#include "Reflection.h"

#include <fmt/format.h>
#include <stdexcept>

namespace Program
{
	namespace
	{
		template <class Type>
		std::string objectPath(std::string_view kind, const Type& type, std::string_view name)
		{
			return fmt::format("/Script/CoreUObject.{}'/Script/{}.{}'", kind, Reflect::moduleOf(type), name);
		}

		PinType withObject(std::string category, std::string object)
		{
			return {std::move(category), "", std::move(object)};
		}

		PinType containerOf(const FPropertyType& type)
		{
			PinType container = pinTypeOf(*type.Inner());
			container.container = type.Kind == EPropertyKind::Array ? "Array" : "Map";
			container.mapValue = type.Value ? pinTypeOf(*type.Value()).category : "";
			return container;
		}

		PinValue enumerator(const UEnum& values, const std::optional<std::string>& written)
		{
			const FEnumerator* const found = written ? values.FindByName(written->c_str()) : values.FindByValue(0);
			if (!found)
			{
				throw std::out_of_range(fmt::format("{} has no value {}", values.Name, written.value_or("0")));
			}
			return {found->Name, found->DisplayName};
		}
	} // namespace

	PinType pinTypeOf(const FPropertyType& type)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Bool:
			return {"bool"};
		case EPropertyKind::Byte:
			return {"byte"};
		case EPropertyKind::Int:
			return {"int"};
		case EPropertyKind::Int64:
			return {"int64"};
		case EPropertyKind::Float:
			return {"real", "float"};
		case EPropertyKind::String:
			return {"string"};
		case EPropertyKind::DateTime:
			return withObject("struct", "/Script/CoreUObject.ScriptStruct'/Script/CoreUObject.DateTime'");
		case EPropertyKind::Enum:
			return withObject("byte", objectPath("Enum", *type.Enum(), type.Enum()->Name));
		case EPropertyKind::Struct:
			return withObject("struct", objectPath("ScriptStruct", *type.Struct(), type.Struct()->Name));
		case EPropertyKind::Object:
			return withObject("object", objectPath("Class", *type.Class(), type.Class()->GetName()));
		case EPropertyKind::Array:
		case EPropertyKind::Map:
			return containerOf(type);
		}
		return {};
	}

	PinValue pinValueOf(const FPropertyType& type, const std::optional<std::string>& written)
	{
		switch (type.Kind)
		{
		case EPropertyKind::Enum:
			return enumerator(*type.Enum(), written);
		case EPropertyKind::Bool:
		{
			const std::string value = written.value_or("false");
			return {value, value};
		}
		case EPropertyKind::String:
			return {written.value_or(""), written.value_or("")};
		case EPropertyKind::Byte:
		case EPropertyKind::Int:
		case EPropertyKind::Int64:
		case EPropertyKind::Float:
		{
			const std::string value = written.value_or(type.Kind == EPropertyKind::Float ? "0.0" : "0");
			return {value, value};
		}
		default:
			return {};
		}
	}
} // namespace Program
