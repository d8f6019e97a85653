#include "Host/Objects.h"
#include "TestObject.h"
#include "UObject/WeakObjectPtr.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{
	DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FSampleDelegate, const FString, text, const TArray<int32>&, numbers);

	class UListener : public UTestObject
	{
	public:
		static UClass* StaticClass()
		{
			static const FClassDefinition Definition{"Listener", &UTestObject::StaticClass, &ConstructObject<UListener>, {}, {}, {}};
			static UClass Class(Definition);
			return &Class;
		}

		void first(const FString text, const TArray<int32>& numbers) { Calls.push_back(text.Len() * 100 + numbers.Num()); }
		void second(const FString, const TArray<int32>&) { Calls.push_back(-1); }
		void single(int32 Value) { Calls.push_back(Value); }

		std::vector<int> Calls;
	};

	class Delegates : public testing::Test
	{
	protected:
		~Delegates() override { HostObjects::DestroyAll(); }
		UListener* Listener = NewObject<UListener>();
	};
} // namespace

TEST_F(Delegates, MulticastCallsInBindingOrderAndBindsOnce)
{
	FSampleDelegate Event;
	Event.AddUniqueDynamic(Listener, &UListener::first);
	Event.AddUniqueDynamic(Listener, &UListener::second);
	Event.AddUniqueDynamic(Listener, &UListener::first);
	Event.Broadcast("abc", {1, 2});
	EXPECT_EQ(Listener->Calls, (std::vector{302, -1}));
	HostObjects::CollectGarbage();
	Event.Broadcast("abc", {}); // must not touch the freed object
}

TEST_F(Delegates, MulticastHandlersMayBindUnbindAndBroadcast)
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

TEST_F(Delegates, SingleCastHoldsItsObjectWeakly)
{
	TDelegate<void(int32)> Delegate;
	EXPECT_FALSE(Delegate.ExecuteIfBound(1));
	Delegate.BindUObject(Listener, &UListener::single);
	Delegate.ExecuteIfBound(2);
	EXPECT_EQ(Listener->Calls, (std::vector{2}));
	HostObjects::CollectGarbage();
	Delegate.ExecuteIfBound(3); // must not touch the freed object
}
