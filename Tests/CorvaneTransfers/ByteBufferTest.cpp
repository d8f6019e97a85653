#include "Threads/ByteBuffer.h"

#include <gtest/gtest.h>
#include <vector>

TEST(ByteBuffer, GivesUpWhenNobodyTakesAndTakesAgainWhenSomebodyHas)
{
	FCorvaneByteBuffer buffer;
	const std::vector<uint8> full(FCorvaneByteBuffer::Limit);
	TArray<uint8> taken;
	bool isFirst = false;
	EXPECT_TRUE(buffer.Put(full.data(), FCorvaneByteBuffer::Limit, isFirst, 1) && isFirst);
	EXPECT_FALSE(buffer.Put(full.data(), 1, isFirst, 1));
	EXPECT_TRUE(buffer.Take(taken));
	EXPECT_EQ(taken.Num(), FCorvaneByteBuffer::Limit);
	EXPECT_TRUE(buffer.Put(full.data(), 1, isFirst, 1) && buffer.Put(full.data(), FCorvaneByteBuffer::Limit - 1, isFirst, 1) && !isFirst);
	buffer.Close();
	EXPECT_FALSE(buffer.Put(full.data(), 1, isFirst, 1) || buffer.Take(taken));
}
