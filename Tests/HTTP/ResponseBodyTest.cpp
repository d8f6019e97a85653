#include "ResponseBody.h"

#include "HttpFixture.h"

#include <atomic>

namespace
{
	/** Byte at a position of the test's endless text; no power of two as period, so that misplaced blocks show. */
	char byteAt(size_t position)
	{
		return static_cast<char>('a' + position % 23);
	}

	std::string textFrom(size_t begin, size_t size)
	{
		std::string result(size, ' ');
		for (size_t i = 0; i < size; ++i)
		{
			result[i] = byteAt(begin + i);
		}
		return result;
	}

	bool isText(const TArray<uint8>& bytes, int32 from = 0)
	{
		for (int32 i = from; i < bytes.Num(); ++i)
		{
			if (static_cast<char>(bytes[i]) != byteAt(static_cast<size_t>(i)))
			{
				return false;
			}
		}
		return true;
	}
} // namespace

TEST(ResponseBody, SnapshotStaysAsItWas)
{
	for (const uint64 expected : {uint64(0), uint64(10), uint64(100'000), uint64(1) << 60})
	{
		FResponseBody body;
		body.Expect(expected);
		EXPECT_EQ(body.Snapshot().Num(), 0);
		ASSERT_TRUE(body.Append(textFrom(0, 10).data(), 10));
		const TArray<uint8>& before = body.Snapshot();
		ASSERT_TRUE(body.Append(textFrom(10, 100'000).data(), 100'000));
		EXPECT_EQ(bytesOf(before), textFrom(0, 10));

		std::string elsewhere;
		std::thread([&] { elsewhere = bytesOf(body.Snapshot()); }).join();
		EXPECT_EQ(elsewhere, textFrom(0, 100'010));
		EXPECT_EQ(before.Num(), 10); // another thread's question changes nothing here

		EXPECT_EQ(&before, &body.Snapshot());
		EXPECT_EQ(bytesOf(before), textFrom(0, 100'010));
	}
}

TEST(ResponseBody, GrowsWithoutMovingWhatWasAnnounced)
{
	FResponseBody body;
	body.Expect(1'000'000);
	ASSERT_TRUE(body.Append("x", 1));
	const uint8* const data = body.Snapshot().GetData();
	ASSERT_TRUE(body.Append(textFrom(0, 999'999).data(), 999'999));
	EXPECT_EQ(body.Snapshot().GetData(), data);
}

TEST(ResponseBody, KeepsWhatFitsUnderTheLimit)
{
	FResponseBody body(100);
	EXPECT_TRUE(body.Append(textFrom(0, 60).data(), 60));
	EXPECT_FALSE(body.Append(textFrom(60, 60).data(), 60));
	EXPECT_EQ(bytesOf(body.Snapshot()), textFrom(0, 100));
	EXPECT_FALSE(body.Append("x", 1));
	EXPECT_EQ(body.Snapshot().Num(), 100);
}

namespace
{
	class GrowingResponse : public HttpTest, public testing::WithParamInterface<bool>
	{
	};
} // namespace

TEST_P(GrowingResponse, IsReadWhileBytesArrive)
{
	static constexpr size_t size = 20 << 20, piece = 10'007;
	RawServer server(
		[sized = GetParam()](Connection& connection)
		{
			connection.readHead();
			connection.send(sized ? "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n" : "HTTP/1.1 200 OK\r\n\r\n");
			for (size_t sent = 0; sent < size; sent += piece)
			{
				connection.send(textFrom(sent, std::min(piece, size - sent)));
			}
		});
	Exchange& exchange = make(server.url());
	std::atomic<bool> good = true;
	std::atomic<int> partialReads = 0;
	const auto read = [&]
	{
		for (int32 seen = 0; seen < static_cast<int32>(size) && !exchange.completed();)
		{
			const FHttpResponsePtr response = exchange.request().GetResponse();
			if (!response)
			{
				continue;
			}
			const TArray<uint8>& bytes = response->GetContent();
			good = good && bytes.Num() >= seen && isText(bytes, seen) && response->GetResponseCode() == 200;
			partialReads += bytes.Num() > seen && bytes.Num() < static_cast<int32>(size);
			seen = bytes.Num();
		}
	};
	ASSERT_TRUE(exchange.start());
	std::thread first(read), second(read);
	pumpUntil([&] { return exchange.completed(); }, 60);
	first.join();
	second.join();
	EXPECT_TRUE(good);
	EXPECT_GT(partialReads, 0);
	EXPECT_TRUE(exchange.succeeded());
	const TArray<uint8>& whole = exchange.shownResponse()->GetContent();
	EXPECT_EQ(whole.Num(), static_cast<int32>(size));
	EXPECT_TRUE(isText(whole));
}

INSTANTIATE_TEST_SUITE_P(
	WithAndWithoutLength, GrowingResponse, testing::Bool(), [](const auto& row) { return row.param ? "Sized" : "Unsized"; });
