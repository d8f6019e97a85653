#include "Pace/Holding.h"

int64 CorvanePace::PartBytes(int64 BytesPerSecond)
{
	constexpr int64 Smallest = 64 * 1024;
	return FMath::Max<int64>(Smallest, BytesPerSecond / 2);
}

double CorvanePace::WaitAfter(int64 Bytes, double Seconds, int64 BytesPerSecond)
{
	return BytesPerSecond <= 0 ? 0.0 : FMath::Max(static_cast<double>(Bytes) / static_cast<double>(BytesPerSecond) - Seconds, 0.0);
}

double CorvanePace::HoldAfter(int64 Bytes, double Seconds, int64 BytesPerSecond)
{
	return ShortOf(WaitAfter(Bytes, Seconds, BytesPerSecond));
}

double CorvanePace::ShortOf(double Seconds)
{
	constexpr double Longest = 0.02;
	return FMath::Min(Seconds, Longest);
}
