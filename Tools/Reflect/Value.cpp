#include "Value.h"

#include <new>
#include <utility>

namespace Reflect
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

	Value::~Value()
	{
		if (memory)
		{
			kind->Destroy(memory);
			::operator delete(memory, std::align_val_t(kind->Alignment));
		}
	}
} // namespace Reflect
