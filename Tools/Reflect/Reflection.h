#pragma once

#include "UObject/Class.h"

#include <string>
#include <string_view>
#include <vector>

/** What scripts see of the reflection registry. Names compare without regard to the case of ASCII letters. Thread: any. */
namespace Reflect
{
	struct Function
	{
		UClass* owner;
		const UFunction* function;
		std::string name; // "Class.function"
	};

	/** Every static function that scripts may call, by header, class and declaration order. */
	const std::vector<Function>& functions();

	/** Every function of objects that scripts may call, in the same order. */
	const std::vector<Function>& methods();
	/** @return the function that objects of a class have under that name, or null. */
	const Function* findMethod(const UClass& type, std::string_view name);

	/** Every registered enumeration. */
	std::vector<const UEnum*> enumerations();

	/**
	 * @param name  "Class.function", or the function's name alone.
	 * @return every function of that name; several when classes share a bare name.
	 */
	std::vector<const Function*> findFunctions(std::string_view name);

	/** @return the name of the module whose headers declare a class, struct, enumeration or signature; empty for the engine's own. */
	std::string_view moduleOf(const UClass& type);
	std::string_view moduleOf(const UScriptStruct& type);
	std::string_view moduleOf(const UEnum& type);
	std::string_view moduleOf(const UDelegateFunction& signature);

	bool equalNames(std::string_view a, std::string_view b);

	/** @return whether a script may set a pin of this kind: all but return values, since an output can start with a value. */
	inline bool isInput(EParameterKind kind)
	{
		return kind != EParameterKind::Return;
	}
	inline bool isOutput(EParameterKind kind)
	{
		return kind != EParameterKind::Input;
	}

	/** @return the pins that a call may set. */
	std::vector<std::string> inputNames(const UFunction& function);

	/** The events of a class and its bases, the class's own first. */
	std::vector<const FMulticastDelegateProperty*> eventsOf(const UClass* type);
	/** @return the event of that name, or null. */
	const FMulticastDelegateProperty* findEvent(const UClass* type, std::string_view name);

	/** @return the class of the nodes that a function makes, or null when the function is no node factory. */
	UClass* nodeClassOf(const UFunction& function);

	/** @return the names of the values of an enumeration; of another type none. */
	std::vector<std::string> valueNames(const FPropertyType& type);

	/** A type as an error message or a listing calls it: "int32", "list of string", "EFoo (A, B)". */
	std::string typeName(const FPropertyType& type);
} // namespace Reflect
