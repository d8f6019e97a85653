#pragma once

#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

/** An object that tells how often it was begun to be destroyed and how often freed. */
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

	static inline int NumBegun = 0;
	static inline int NumFreed = 0;
};
