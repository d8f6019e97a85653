#pragma once

#include "Containers/Array.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

#include <vector>

/** An object that tells how often it was begun to be destroyed and how often freed, and what delegates have told it. */
class UTestObject : public UObject
{
public:
	static UClass* StaticClass()
	{
		static const FClassDefinition Definition{"TestObject", &UObject::StaticClass, &ConstructObject<UTestObject>, {}, {}, {}};
		static UClass Class(Definition);
		return &Class;
	}

	~UTestObject() override { ++NumFreed; }
	void BeginDestroy() override
	{
		++NumBegun;
		UObject::BeginDestroy();
	}
	void first(const FString text, const TArray<int32>& numbers) { Calls.push_back(text.Len() * 100 + numbers.Num()); }
	void second(const FString, const TArray<int32>&) { Calls.push_back(-1); }
	void single(int32 Value) { Calls.push_back(Value); }

	std::vector<int> Calls;
	static inline int NumBegun = 0;
	static inline int NumFreed = 0;
};
