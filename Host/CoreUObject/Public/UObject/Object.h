#pragma once

#include "CoreMinimal.h"
#include "UObject/Class.h"
#include "UObject/ObjectMacros.h"

#include <atomic>
#include <concepts>

class FVTableHelper;

enum EObjectFlags : uint32
{
	RF_NoFlags = 0,
	RF_ClassDefaultObject = 1
};

/** Handed to constructors that ask for it, as in the engine; it carries nothing here. */
class FObjectInitializer
{
public:
	static const FObjectInitializer& Get();
};

namespace ObjectLifetime
{
	/** Where an object stands in the object table; the serial number tells a reused place from the old one. */
	struct FHandle
	{
		int32 Index = INDEX_NONE;
		int32 Serial = 0;
	};
} // namespace ObjectLifetime

/**
 * Base of all engine objects. An object is freed by a collection on the game thread when it is not rooted, no strong
 * pointer holds it and it is no class default object.
 */
class UObject
{
public:
	UObject();
	explicit UObject(const FObjectInitializer& ObjectInitializer);
	explicit UObject(FVTableHelper& Helper); // only called by code in the shape of the engine's, which is never linked with this
	virtual ~UObject();
	UObject(const UObject&) = delete;
	UObject& operator=(const UObject&) = delete;

	static UClass* StaticClass();
	UClass* GetClass() const { return Class; }
	bool IsA(const UClass* Other) const { return Class->IsChildOf(Other); }
	bool HasAnyFlags(EObjectFlags Flags) const { return (ObjectFlags & Flags) != 0; }

	void AddToRoot() { bRooted = true; }
	void RemoveFromRoot() { bRooted = false; }
	bool IsRooted() const { return bRooted; }

	/**
	 * Runs BeginDestroy at once, the first time it is called; the memory stays until a collection.
	 * @return whether BeginDestroy ran.
	 */
	bool ConditionalBeginDestroy();
	/** Overrides call Super::BeginDestroy last. Thread: game thread. */
	virtual void BeginDestroy();

private:
	friend struct FObjectLifetime;

	UClass* const Class;
	const uint32 ObjectFlags;
	const ObjectLifetime::FHandle Handle;
	bool bRooted = false;
	bool bBeginDestroyRan = false;
	bool bBaseReached = false;
	bool bGarbage = false;
};

/** What the templates of the object headers are built on. */
namespace ObjectLifetime
{
	UObject* Create(UClass* Class);
	FHandle HandleOf(const UObject* Object);
	/** @return null when the object was freed. Thread: any; off the game thread the answer may be out of date at once. */
	UObject* Resolve(FHandle Handle);
	/** Resolve, and keep the object from being freed until Release. Thread: any. */
	UObject* Acquire(FHandle Handle);
	/** The end of one Acquire. Harmless when the end of the program has freed the object all the same. */
	void Release(FHandle Handle);
} // namespace ObjectLifetime

/** Runs the constructor that the class offers. Only the generated class tables call it. */
template <class T>
UObject* ConstructObject()
{
	if constexpr (std::constructible_from<T, const FObjectInitializer&>)
	{
		return new T(FObjectInitializer::Get());
	}
	else
	{
		return new T();
	}
}
