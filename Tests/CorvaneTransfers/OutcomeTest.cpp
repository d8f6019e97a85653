#include "CorvaneTransfers.h"
#include "UObject/Class.h"

#include <gtest/gtest.h>

TEST(TransferOutcome, IsKnownToScriptsByNameAndNumber)
{
	const FEnumerator* Found = StaticEnum<ECorvaneTransferOutcome>()->FindByName("wronghash");
	ASSERT_NE(Found, nullptr);
	EXPECT_EQ(Found->Value, 10);
}
