#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"

#include <functional>
#include <type_traits>

class UClass;
struct UEnum;
struct UScriptStruct;

/** The kinds of values that scripts can hold in this host. */
enum class EPropertyKind : uint8
{
	Bool,
	Byte, // uint8
	Int, // int32
	Int64,
	Float,
	String, // FString
	DateTime, // FDateTime
	Enum, // 8-bit enumeration
	Struct, // reflected struct, opaque to scripts
	Object, // pointer to a reflected class
	Array, // Inner = element
	Map // Inner = key, Value = value
};

/**
 * How to handle a value of one C++ type without knowing the type: calls by reflected names and the thunks build argument
 * lists with it. One constant object per type, from PropertyTypeOf<T>().
 */
struct FPropertyType
{
	EPropertyKind Kind;
	size_t Size;
	size_t Alignment;
	void (*Construct)(void* Memory);
	void (*Destroy)(void* Value);
	void (*Assign)(void* To, const void* From);
	void (*Move)(void* To, void* From);

	const FPropertyType* (*Inner)() = nullptr;
	const FPropertyType* (*Value)() = nullptr;
	const UEnum* (*Enum)() = nullptr;
	const UScriptStruct* (*Struct)() = nullptr;
	UClass* (*Class)() = nullptr;

	// Array: number of elements, address of one, append a default one and give its address.
	int32 (*ArrayNum)(const void* Array) = nullptr;
	void* (*ArrayAt)(void* Array, int32 Index) = nullptr;
	void* (*ArrayAdd)(void* Array) = nullptr;

	// Map: set the default value for a copied key and give the value's address; visit all pairs in order.
	void* (*MapAdd)(void* Map, const void* Key) = nullptr;
	void (*MapVisit)(void* Map, const std::function<void(const void* Key, void* Value)>& Visitor) = nullptr;
};

template <class T>
const FPropertyType& PropertyTypeOf();

/** Declared by the generated header of each reflected enumeration. */
template <class E>
const UEnum* StaticEnum();

namespace PropertyTypePrivate
{
	template <class T>
	constexpr FPropertyType Plain(EPropertyKind Kind)
	{
		FPropertyType Type{};
		Type.Kind = Kind;
		Type.Size = sizeof(T);
		Type.Alignment = alignof(T);
		Type.Construct = [](void* Memory) { ::new (Memory) T(); };
		Type.Destroy = [](void* Object) { static_cast<T*>(Object)->~T(); };
		Type.Assign = [](void* To, const void* From) { *static_cast<T*>(To) = *static_cast<const T*>(From); };
		Type.Move = [](void* To, void* From) { *static_cast<T*>(To) = std::move(*static_cast<T*>(From)); };
		return Type;
	}

	template <class T>
	struct TMaker
	{
		static FPropertyType Make()
		{
			if constexpr (std::is_enum_v<T>)
			{
				static_assert(sizeof(T) == 1, "scripts hold 8-bit enumerations only");
				FPropertyType Type = Plain<T>(EPropertyKind::Enum);
				Type.Enum = &StaticEnum<T>;
				return Type;
			}
			else
			{
				FPropertyType Type = Plain<T>(EPropertyKind::Struct);
				Type.Struct = &T::StaticStruct;
				return Type;
			}
		}
	};

	template <class T>
	struct TMaker<T*>
	{
		static FPropertyType Make()
		{
			FPropertyType Type = Plain<T*>(EPropertyKind::Object);
			Type.Class = &T::StaticClass;
			return Type;
		}
	};

	template <class T>
	struct TMaker<TArray<T>>
	{
		static FPropertyType Make()
		{
			using ArrayType = TArray<T>;
			FPropertyType Type = Plain<ArrayType>(EPropertyKind::Array);
			Type.Inner = [] { return &PropertyTypeOf<T>(); };
			Type.ArrayNum = [](const void* Array) { return static_cast<const ArrayType*>(Array)->Num(); };
			Type.ArrayAt = [](void* Array, int32 Index) -> void* { return &(*static_cast<ArrayType*>(Array))[Index]; };
			Type.ArrayAdd = [](void* Array) -> void*
			{
				ArrayType& Typed = *static_cast<ArrayType*>(Array);
				Typed.Add(T());
				return &Typed[Typed.Num() - 1];
			};
			return Type;
		}
	};

	template <class K, class V>
	struct TMaker<TMap<K, V>>
	{
		static FPropertyType Make()
		{
			using MapType = TMap<K, V>;
			FPropertyType Type = Plain<MapType>(EPropertyKind::Map);
			Type.Inner = [] { return &PropertyTypeOf<K>(); };
			Type.Value = [] { return &PropertyTypeOf<V>(); };
			Type.MapAdd = [](void* Map, const void* Key) -> void*
			{ return &static_cast<MapType*>(Map)->Add(*static_cast<const K*>(Key), V()); };
			Type.MapVisit = [](void* Map, const std::function<void(const void*, void*)>& Visitor)
			{
				for (auto& Pair : *static_cast<MapType*>(Map))
				{
					Visitor(&Pair.Key, &Pair.Value);
				}
			};
			return Type;
		}
	};

	template <class T, EPropertyKind Kind>
	struct TPlainMaker
	{
		static FPropertyType Make() { return Plain<T>(Kind); }
	};

	template <>
	struct TMaker<bool> : TPlainMaker<bool, EPropertyKind::Bool>
	{
	};
	template <>
	struct TMaker<uint8> : TPlainMaker<uint8, EPropertyKind::Byte>
	{
	};
	template <>
	struct TMaker<int32> : TPlainMaker<int32, EPropertyKind::Int>
	{
	};
	template <>
	struct TMaker<int64> : TPlainMaker<int64, EPropertyKind::Int64>
	{
	};
	template <>
	struct TMaker<float> : TPlainMaker<float, EPropertyKind::Float>
	{
	};
	template <>
	struct TMaker<FString> : TPlainMaker<FString, EPropertyKind::String>
	{
	};
	template <>
	struct TMaker<FDateTime> : TPlainMaker<FDateTime, EPropertyKind::DateTime>
	{
	};
} // namespace PropertyTypePrivate

template <class T>
const FPropertyType& PropertyTypeOf()
{
	static const FPropertyType Type = PropertyTypePrivate::TMaker<T>::Make();
	return Type;
}
