#include "UObject/Object.h"

#include "CoreGlobals.h"
#include "Host/Objects.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace
{
	/** What the UObject constructor that runs next is told; a constructor cannot be handed it, since classes write their own. */
	struct FPending
	{
		UClass* Class = nullptr;
		uint32 Flags = RF_NoFlags;
	};
	thread_local FPending pending;

	struct FSlot
	{
		UObject* Object = nullptr;
		int32 Serial = 0;
		int32 StrongCount = 0;
	};

	struct FObjectTable
	{
		std::mutex Mutex; // guards what follows
		std::vector<FSlot> Slots;
		std::vector<int32> Free;
		size_t CreatedSinceCollection = 0;

		ObjectLifetime::FHandle Enter(UObject* Object)
		{
			const std::scoped_lock Lock(Mutex);
			++CreatedSinceCollection;
			if (Free.empty())
			{
				Slots.push_back({});
				Free.push_back(static_cast<int32>(Slots.size()) - 1);
			}
			const int32 Index = Free.back();
			Free.pop_back();
			FSlot& Slot = Slots[static_cast<size_t>(Index)];
			Slot = {Object, Slot.Serial + 1, 0};
			return {Index, Slot.Serial};
		}

		void Leave(int32 Index)
		{
			const std::scoped_lock Lock(Mutex);
			Slots[static_cast<size_t>(Index)].Object = nullptr;
			Free.push_back(Index);
		}

		/** Call with the lock held, or on the game thread, which alone changes what it reads. @return null when the place holds another object by now, or none. */
		FSlot* Find(ObjectLifetime::FHandle Handle)
		{
			if (Handle.Index == INDEX_NONE)
			{
				return nullptr;
			}
			FSlot& Slot = Slots[static_cast<size_t>(Handle.Index)];
			return Slot.Serial == Handle.Serial && Slot.Object ? &Slot : nullptr;
		}
	};

	FObjectTable& theTable()
	{
		static FObjectTable& Table = *new FObjectTable(); // never destroyed: handles are asked until the very end
		return Table;
	}
} // namespace

/** The one friend of UObject and UClass. */
struct FObjectLifetime
{
	static void SetDefault(UClass* Class, UObject* Object) { Class->DefaultObject = Object; }
	static ObjectLifetime::FHandle HandleOf(const UObject* Object) { return Object->Handle; }
	static bool IsGarbage(const UObject* Object) { return Object->bGarbage; }

	static UObject* Construct(UClass* Class, uint32 Flags)
	{
		HOST_CHECK(Class->Definition.Create && !pending.Class);
		pending = {Class, Flags};
		UObject* Object = Class->Definition.Create();
		HOST_CHECK(!pending.Class); // the constructor must have run UObject's
		return Object;
	}

	/** Marks what may be freed while the lock is held: once marked, an object can no longer be resolved or acquired. */
	template <class Predicate>
	static std::vector<UObject*> TakeGarbage(Predicate IsDead)
	{
		std::vector<UObject*> Dead;
		FObjectTable& Table = theTable();
		const std::scoped_lock Lock(Table.Mutex);
		for (FSlot& Slot : Table.Slots)
		{
			if (Slot.Object && IsDead(Slot))
			{
				Slot.Object->bGarbage = true;
				Dead.push_back(Slot.Object);
				Slot.Object = nullptr;
				++Slot.Serial;
			}
		}
		Table.CreatedSinceCollection = 0;
		return Dead;
	}

	static size_t Free(const std::vector<UObject*>& Dead)
	{
		for (UObject* Object : Dead)
		{
			Object->ConditionalBeginDestroy();
		}
		for (UObject* Object : Dead)
		{
			delete Object;
		}
		return Dead.size();
	}

	static size_t Collect()
	{
		return Free(TakeGarbage([](const FSlot& Slot)
			{ return !Slot.Object->bRooted && Slot.StrongCount == 0 && !Slot.Object->HasAnyFlags(RF_ClassDefaultObject); }));
	}

	static void DestroyAll()
	{
		Free(TakeGarbage([](const FSlot& Slot) { return !Slot.Object->HasAnyFlags(RF_ClassDefaultObject); }));
		const std::vector<UObject*> Defaults = TakeGarbage([](const FSlot&) { return true; });
		for (UObject* Default : Defaults)
		{
			Default->ConditionalBeginDestroy();
			SetDefault(Default->GetClass(), nullptr);
		}
		Free(Defaults);
	}
};

const FObjectInitializer& FObjectInitializer::Get()
{
	static const FObjectInitializer Initializer;
	return Initializer;
}

UObject::UObject()
	: Class(std::exchange(pending.Class, nullptr))
	, ObjectFlags(pending.Flags)
	, Handle(theTable().Enter(this))
{
	HOST_CHECK(Class); // objects come from NewObject only
}

UObject::UObject(const FObjectInitializer&)
	: UObject()
{
}

UObject::~UObject()
{
	theTable().Leave(Handle.Index);
}

UClass* UObject::StaticClass()
{
	static const FClassDefinition Definition{"Object", nullptr, nullptr, {}, {}, {}};
	static UClass ObjectClass(Definition);
	return &ObjectClass;
}

bool UObject::ConditionalBeginDestroy()
{
	if (bBeginDestroyRan)
	{
		return false;
	}
	bBeginDestroyRan = true;
	BeginDestroy();
	HOST_CHECK(bBaseReached); // an override forgot Super::BeginDestroy
	return true;
}

void UObject::BeginDestroy()
{
	bBaseReached = true;
}

UObject* ObjectLifetime::Create(UClass* Class)
{
	HOST_CHECK(IsInGameThread());
	return FObjectLifetime::Construct(Class, RF_NoFlags);
}

ObjectLifetime::FHandle ObjectLifetime::HandleOf(const UObject* Object)
{
	return Object ? FObjectLifetime::HandleOf(Object) : FHandle();
}

UObject* ObjectLifetime::Resolve(FHandle Handle)
{
	std::unique_lock Lock(theTable().Mutex, std::defer_lock);
	if (!IsInGameThread())
	{
		Lock.lock();
	}
	const FSlot* Slot = theTable().Find(Handle);
	return Slot ? Slot->Object : nullptr;
}

UObject* ObjectLifetime::Acquire(FHandle Handle)
{
	const std::scoped_lock Lock(theTable().Mutex);
	FSlot* Slot = theTable().Find(Handle);
	if (!Slot)
	{
		return nullptr;
	}
	++Slot->StrongCount;
	return Slot->Object;
}

void ObjectLifetime::Release(FHandle Handle)
{
	const std::scoped_lock Lock(theTable().Mutex);
	if (FSlot* Slot = theTable().Find(Handle))
	{
		--Slot->StrongCount;
	}
}

bool IsValid(const UObject* Object)
{
	return Object && !FObjectLifetime::IsGarbage(Object);
}

void HostObjects::CreateDefaultObjects()
{
	// A class asked for its super class first, so that defaults stand before those that build on them.
	const auto Make = [](auto& Self, UClass* Class) -> void
	{
		if (!Class || Class->GetDefaultObject() || !Class->Definition.Create)
		{
			return;
		}
		Self(Self, Class->GetSuperClass());
		FObjectLifetime::SetDefault(Class, FObjectLifetime::Construct(Class, RF_ClassDefaultObject));
	};
	for (const FCompiledInHeader* Header : GetCompiledInHeaders())
	{
		for (UClass* (*const StaticClass)() : Header->Classes)
		{
			Make(Make, StaticClass());
		}
	}
}

size_t HostObjects::CollectGarbage()
{
	HOST_CHECK(IsInGameThread());
	return FObjectLifetime::Collect();
}

size_t HostObjects::NumCreatedSinceCollection()
{
	const std::scoped_lock Lock(theTable().Mutex);
	return theTable().CreatedSinceCollection;
}

size_t HostObjects::NumObjects()
{
	const std::scoped_lock Lock(theTable().Mutex);
	return theTable().Slots.size() - theTable().Free.size();
}

bool UObjectInitialized()
{
	return HostObjects::NumObjects() > 0;
}

void HostObjects::DestroyAll()
{
	FObjectLifetime::DestroyAll();
}
