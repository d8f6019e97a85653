#include "Host/Objects.h"
#include "TestObject.h"
#include "UObject/StrongObjectPtr.h"
#include "UObject/WeakObjectPtr.h"

#include <gtest/gtest.h>

class Objects : public testing::Test
{
protected:
	Objects() { UTestObject::NumBegun = UTestObject::NumFreed = 0; }
	~Objects() override { HostObjects::DestroyAll(); }
};

TEST_F(Objects, LiveUntilACollectionFindsThatNothingHoldsThem)
{
	const TWeakObjectPtr<UTestObject> Loose = NewObject<UTestObject>();
	UTestObject* Rooted = NewObject<UTestObject>();
	Rooted->AddToRoot();
	TStrongObjectPtr<UTestObject> Strong(NewObject<UTestObject>());
	TStrongObjectPtr<UTestObject> Second = Strong;
	{
		const TStrongObjectPtr<UTestObject> Pin = Loose.Pin();
		EXPECT_EQ(HostObjects::CollectGarbage(), 0u);
		EXPECT_TRUE(Pin.IsValid() && Loose.IsValid());
	}
	EXPECT_EQ(HostObjects::CollectGarbage(), 1u);
	EXPECT_FALSE(Loose.IsValid() || Loose.Pin().IsValid());
	Strong.Reset();
	Rooted->RemoveFromRoot();
	EXPECT_EQ(HostObjects::CollectGarbage(), 1u) << "the second strong pointer still holds its object";
	Second = TStrongObjectPtr<UTestObject>();
	EXPECT_EQ(HostObjects::CollectGarbage(), 1u);
	EXPECT_EQ(UTestObject::NumFreed, 3);
	EXPECT_EQ(UTestObject::NumBegun, 3);
}

TEST_F(Objects, BeginDestroyOnceAndKeepTheirMemoryUntilACollection)
{
	UTestObject* Object = NewObject<UTestObject>();
	const TWeakObjectPtr<UTestObject> Weak = Object;
	EXPECT_TRUE(Object->ConditionalBeginDestroy());
	EXPECT_FALSE(Object->ConditionalBeginDestroy());
	EXPECT_EQ(Weak.Get(), Object);
	HostObjects::CollectGarbage();
	EXPECT_EQ(UTestObject::NumBegun, 1);
	EXPECT_EQ(UTestObject::NumFreed, 1);
}

TEST_F(Objects, HandlesDoNotFollowAReusedPlace)
{
	const TWeakObjectPtr<UTestObject> Old = NewObject<UTestObject>();
	HostObjects::CollectGarbage();
	UTestObject* New = NewObject<UTestObject>();
	EXPECT_FALSE(Old.IsValid() || Old.Pin().IsValid());
	EXPECT_EQ(TWeakObjectPtr<UTestObject>(New).Get(), New);
}

TEST_F(Objects, StrongPointersMayOutliveTheEndOfTheProgram)
{
	const TStrongObjectPtr<UTestObject> Strong(NewObject<UTestObject>());
	HostObjects::DestroyAll();
	EXPECT_EQ(UTestObject::NumFreed, 1);
	NewObject<UTestObject>()->AddToRoot(); // takes the freed place; the old pointer must not count for it
}
