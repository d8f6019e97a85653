#include "Value.h"

#include <new>
#include <utility>

namespace Script
{
	Value::Value(const FPropertyType& valueType)
		: kind(&valueType)
		, memory(::operator new(valueType.Size, std::align_val_t(valueType.Alignment)))
	{
		kind->Construct(memory);
	}

	Value::Value(const FPropertyType& valueType, const void* source)
		: Value(valueType)
	{
		kind->Assign(memory, source);
	}

	Value::Value(Value&& other) noexcept
		: kind(other.kind)
		, memory(std::exchange(other.memory, nullptr))
	{
	}

	Value& Value::operator=(Value&& other) noexcept
	{
		std::swap(kind, other.kind);
		std::swap(memory, other.memory);
		return *this;
	}

	Value::~Value()
	{
		release();
	}

	void Value::release()
	{
		if (memory)
		{
			kind->Destroy(memory);
			::operator delete(std::exchange(memory, nullptr), std::align_val_t(kind->Alignment));
		}
	}
} // namespace Script
