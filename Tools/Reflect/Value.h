#pragma once

#include "UObject/PropertyType.h"

namespace Reflect
{
	/** One value of a reflected type that is known at run time only. Thread: game thread. */
	class Value
	{
	public:
		/** Makes the type's default value. */
		explicit Value(const FPropertyType& valueType);
		/** Makes a copy of the value at an address. */
		Value(const FPropertyType& valueType, const void* source);
		Value(Value&& other) noexcept;
		~Value();

		const FPropertyType& type() const { return *kind; }
		/** @return the address of the value; null after it was moved from. */
		void* get() const { return memory; }

	private:
		const FPropertyType* kind;
		void* memory;
	};
} // namespace Reflect
