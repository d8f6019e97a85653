#include "Containers/Array.h"
#include "Containers/Map.h"
#include "Containers/Set.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{
	std::string spell(const TMap<FString, int32>& Map)
	{
		std::string Text;
		for (const auto& Pair : Map)
		{
			Text += utf8(Pair.Key) + '=' + std::to_string(Pair.Value) + ' ';
		}
		return Text;
	}
} // namespace

TEST(Array, AddsAnElementOfItselfWhileItGrows)
{
	TArray<std::string> Array{"first"};
	for (int Round = 0; Round < 100; ++Round)
	{
		Array.Add(Array[0]);
	}
	EXPECT_EQ(Array.Num(), 101);
	EXPECT_EQ(Array.Last(), "first");
}

TEST(Array, CopiesDeeplyAndMovesWithoutCopying)
{
	TArray<std::string> Array{"a", "b"};
	TArray<std::string> Copy = Array;
	Copy[0] = "changed";
	const std::string* Storage = Array.GetData();
	const TArray<std::string> Moved = std::move(Array);
	EXPECT_TRUE(Moved == (TArray<std::string>{"a", "b"}));
	EXPECT_EQ(Moved.GetData(), Storage);
	EXPECT_TRUE(Array.IsEmpty()); // NOLINT: a moved-from array is empty
}

TEST(Array, DestroysWhatItRemoves)
{
	const auto Shared = std::make_shared<int>(1);
	TArray<std::shared_ptr<int>> Array{Shared, Shared, Shared};
	EXPECT_EQ(Array.RemoveSingle(Shared), 1);
	EXPECT_EQ(Shared.use_count(), 3);
	Array.Reset();
	EXPECT_EQ(Shared.use_count(), 1);
	EXPECT_EQ(Array.RemoveSingle(Shared), 0);
}

TEST(Map, KeepsInsertionOrderAndIgnoresTheCaseOfKeys)
{
	TMap<FString, int32> Map{{"Content-Type", 1}, {"b", 2}, {"a", 3}};
	Map.Add("CONTENT-type", 4); // keeps its place, takes the new spelling
	EXPECT_EQ(spell(Map), "CONTENT-type=4 b=2 a=3 ");
	EXPECT_EQ(Map.FindRef("content-type"), 4);
	EXPECT_EQ(Map.Remove("B"), 1);
	EXPECT_EQ(Map.Remove("B"), 0);
	Map.Add("b", 5);
	EXPECT_EQ(spell(Map), "CONTENT-type=4 a=3 b=5 ");
	EXPECT_EQ(Map.Find("missing"), nullptr);
}

TEST(Map, CopiesAndMovesAreIndependent)
{
	TMap<FString, int32> Map{{"x", 1}, {"y", 2}};
	TMap<FString, int32> Copy = Map;
	Copy.Add("X", 9);
	EXPECT_EQ(Map.FindRef("x"), 1);
	TMap<FString, int32> Moved = std::move(Map);
	Moved.Remove("x");
	Moved.Add("z", 3);
	EXPECT_EQ(spell(Moved), "y=2 z=3 ");
	Copy = Moved;
	EXPECT_EQ(spell(Copy), "y=2 z=3 ");
}

TEST(Set, IgnoresTheCaseOfTexts)
{
	TSet<FString> Set;
	Set.Add("ABC");
	Set.Add("abc");
	EXPECT_EQ(Set.Num(), 1);
	EXPECT_EQ(Set.Remove("aBc"), 1);
	EXPECT_FALSE(Set.Contains("ABC"));
}
