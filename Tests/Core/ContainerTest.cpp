#include "Containers/Array.h"
#include "Containers/Map.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <memory>

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
	const std::string* Storage = Array.GetData();
	EXPECT_EQ(TArray<std::string>(std::move(Array)).GetData(), Storage) << "moved without copies";
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
	TMap<FString, int32> Copy = Map;
	Map.Add("CONTENT-type", 4); // keeps its place, takes the new spelling
	EXPECT_EQ(spell(Map), "CONTENT-type=4 b=2 a=3 ");
	EXPECT_EQ(Map.FindRef("content-type"), 4);
	EXPECT_EQ(Map.Remove("B"), 1);
	EXPECT_EQ(Map.Remove("B"), 0);
	TMap<FString, int32> Moved = std::move(Map);
	Moved.Add("b", 5);
	EXPECT_EQ(spell(Moved), "CONTENT-type=4 a=3 b=5 ");
	EXPECT_EQ(Moved.Find("missing"), nullptr);
	EXPECT_EQ(spell(Copy), "Content-Type=1 b=2 a=3 ");
	Copy = Moved;
	EXPECT_EQ(Copy.FindRef("B"), 5);
}
