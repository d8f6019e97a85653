#pragma once

#include "UObject/PropertyType.h"

#include <span>

class UObject;
class FMulticastScriptDelegate;

/**
 * The reflection registry: plain constant tables that the header tool writes, one set per header, and the class object
 * that adds the default object to them. All texts are UTF-8. Tables live as long as the program; reading them is safe
 * from any thread.
 */

/** One `Key = "Value"` of a `meta = (...)` list; specifiers such as Category and DisplayName are kept here too. */
struct FMetaEntry
{
	const char* Key;
	const char* Value;
};

using FMetaList = std::span<const FMetaEntry>;

/**
 * @param Key  compared without regard to case.
 * @return the value, or an empty text when the list has no such key; never null.
 */
const char* FindMeta(FMetaList List, const char* Key);

enum class EParameterKind : uint8
{
	Input, // by value or const reference
	Output, // non-const reference
	InputOutput, // non-const reference marked UPARAM(ref)
	Return
};

struct FParameter
{
	const char* Name; // "ReturnValue" for the return value
	const FPropertyType& (*Type)();
	EParameterKind Kind;
	const char* Default; // the declared default as text ("true", "10485760", enumerator name, unescaped string); null when there is none
	FMetaList Meta; // UPARAM metadata
};

enum EFunctionFlags : uint32
{
	FUNC_None = 0,
	FUNC_Static = 1,
	FUNC_BlueprintCallable = 2, // scripts may call it
	FUNC_BlueprintPure = 4 // callable without execution pins
};

struct UFunction
{
	const char* Name;
	uint32 Flags;
	std::span<const FParameter> Parameters; // declaration order; the return value, if any, last
	/**
	 * The thunk: calls the C++ function.
	 * @param Self       the object, null for static functions.
	 * @param Arguments  one address per entry of Parameters, each holding a constructed value of that type. What the function
	 *   takes by value is moved out of it.
	 * @note Thread: game thread.
	 */
	void (*Invoke)(UObject* Self, void* const* Arguments);
	FMetaList Meta;
};

/** A declared multicast delegate: the names and types of the parameters that its handlers receive. */
struct UDelegateFunction
{
	const char* Name; // with its F, as declared
	std::span<const FParameter> Parameters;
	FMetaList Meta;
};

/** A delegate member that scripts may bind handlers to. */
struct FMulticastDelegateProperty
{
	const char* Name;
	const UDelegateFunction* Signature;
	FMulticastScriptDelegate& (*Get)(UObject* Owner);
	FMetaList Meta;
};

struct FEnumerator
{
	const char* Name;
	int64 Value;
	const char* DisplayName; // the name itself when no display name was given
	const char* Comment; // what its documentation comment says
};

struct UEnum
{
	const char* Name;
	std::span<const FEnumerator> Enumerators;
	FMetaList Meta;

	/** @return the entry called Name (case is ignored), or null. */
	const FEnumerator* FindByName(const char* EnumeratorName) const;
	/** @return the first entry of that value, or null. */
	const FEnumerator* FindByValue(int64 Value) const;
};

struct UScriptStruct
{
	const char* Name; // without its F, as scripts see it
	const FPropertyType& (*Type)();
	FMetaList Meta;
};

struct FClassDefinition
{
	const char* Name; // without its U, as scripts see it
	UClass* (*SuperClass)(); // null for UObject
	UObject* (*Create)(); // runs the C++ constructor; null for abstract classes
	std::span<const UFunction> Functions;
	std::span<const FMulticastDelegateProperty> Delegates;
	FMetaList Meta;
};

class UClass
{
public:
	explicit UClass(const FClassDefinition& InDefinition)
		: Definition(InDefinition)
	{
	}
	UClass(const UClass&) = delete;
	UClass& operator=(const UClass&) = delete;

	const char* GetName() const { return Definition.Name; }
	UClass* GetSuperClass() const { return Definition.SuperClass ? Definition.SuperClass() : nullptr; }
	bool IsChildOf(const UClass* Other) const;
	/** The class default object; null before start-up and after shutdown. Thread: game thread. */
	UObject* GetDefaultObject() const { return DefaultObject; }

	const FClassDefinition& Definition;

private:
	friend struct FObjectLifetime;
	UObject* DefaultObject = nullptr;
};

/**
 * What one header registers. The generated source of each header holds one static object of this type, whose
 * constructor links it into a list; start-up walks that list. Nothing else happens before main().
 */
struct FCompiledInHeader
{
	FCompiledInHeader(const char* InModule, const char* InName, std::span<UClass* (*const)()> InClasses,
		std::span<const UScriptStruct* const> InStructs, std::span<const UEnum* const> InEnums,
		std::span<const UDelegateFunction* const> InDelegates);

	const char* const Module; // the module that the header belongs to, "Corvane"
	const char* const Name; // the header's file name, "CorvaneBPLibrary.h"
	const std::span<UClass* (*const)()> Classes;
	const std::span<const UScriptStruct* const> Structs;
	const std::span<const UEnum* const> Enums;
	const std::span<const UDelegateFunction* const> Delegates;
	FCompiledInHeader* Next = nullptr;
};

/** All registered headers, sorted by name so that every walk has the same order. Thread: any. */
std::span<const FCompiledInHeader* const> GetCompiledInHeaders();
