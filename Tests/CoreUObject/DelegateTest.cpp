#include "Host/Objects.h"
#include "TestObject.h"
#include "UObject/WeakObjectPtr.h"

#include <gtest/gtest.h>

namespace
{
	DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FSampleDelegate, const FString, text, const TArray<int32>&, numbers);
} // namespace

TEST(Delegates, CallInBindingOrderBindOnceAndHoldTheirObjectsWeakly)
{
	UTestObject* const Listener = NewObject<UTestObject>();
	TDelegate<void(int32)> Single;
	EXPECT_FALSE(Single.ExecuteIfBound(1));
	Single.BindUObject(Listener, &UTestObject::single);
	Single.ExecuteIfBound(2);
	FSampleDelegate Event;
	Event.AddUniqueDynamic(Listener, &UTestObject::first);
	Event.AddUniqueDynamic(Listener, &UTestObject::second);
	Event.AddUniqueDynamic(Listener, &UTestObject::first);
	Event.Broadcast("abc", {1, 2});
	EXPECT_EQ(Listener->Calls, (std::vector{2, 302, -1}));
	HostObjects::CollectGarbage();
	Event.Broadcast("abc", {}); // must not touch the freed object
	Single.ExecuteIfBound(3);
}

TEST(Delegates, MulticastHandlersMayBindUnbindAndBroadcast)
{
	FSampleDelegate Event;
	std::vector<FString> Seen;
	uint64 Later = 0;
	Event.AddHandler(
		[&](void* const* Arguments)
		{
			Seen.push_back(*static_cast<const FString*>(Arguments[0]));
			if (Seen.size() == 1)
			{
				Event.RemoveHandler(Later);
				Event.AddHandler([&](void* const*) { Seen.push_back("new"); });
				Event.Broadcast("inner", {});
			}
		});
	Later = Event.AddHandler([&](void* const*) { Seen.push_back("removed"); });
	Event.Broadcast("outer", {});
	// The copy that the outer round walks still holds the removed handler and not the new one; the inner round the reverse.
	EXPECT_EQ(Seen, (std::vector<FString>{"outer", "inner", "new", "removed"}));
	EXPECT_FALSE(Event.RemoveHandler(Later));
}
