#include "Pace/PaceLedger.h"

namespace CorvanePaceLedger
{
	static constexpr double ShortestPart = 0.05; // seconds' worth
	static constexpr double LongestPart = 0.5;
	static constexpr int64 SmallestPart = 1024;

	/** Time that was not used may be made up for, as far as a frame or a slow answer has cost it. */
	static constexpr double MostLate = 0.03;
} // namespace CorvanePaceLedger

void FCorvanePaceLedger::SetLimit(double Now, int64 BytesPerSecond)
{
	const double Ahead = SecondsUntilFree(Now);
	const double Bytes = Ahead * static_cast<double>(Limit);
	Limit = FMath::Max<int64>(BytesPerSecond, 0);
	FreeAt = Now + (Limit > 0 ? Bytes / static_cast<double>(Limit) : 0.0);
}

int64 FCorvanePaceLedger::PartBytes(double SecondsOfLast) const
{
	using namespace CorvanePaceLedger;
	if (Limit == 0)
	{
		return 0;
	}
	const double Seconds = FMath::Min(FMath::Max(1.5 * SecondsOfLast, ShortestPart), LongestPart);
	return FMath::Max(static_cast<int64>(Seconds * static_cast<double>(Limit)), SmallestPart);
}

double FCorvanePaceLedger::SecondsUntilFree(double Now) const
{
	return Limit == 0 ? 0.0 : FMath::Max(FreeAt - Now, 0.0);
}

/** Many small files would wait for one another if each were counted as a whole part until it is there. */
int64 FCorvanePaceLedger::Book(double Now, int64 MostBytes)
{
	const auto Expected = static_cast<int64>(2 * UsualBytes);
	const int64 Bytes = UsualBytes < 0 ? MostBytes : FMath::Min(MostBytes, Expected);
	FreeAt = FMath::Max(FreeAt, Now - CorvanePaceLedger::MostLate);
	Correct(Bytes);
	return Bytes;
}

void FCorvanePaceLedger::Correct(int64 Bytes)
{
	FreeAt += Limit == 0 ? 0.0 : static_cast<double>(Bytes) / static_cast<double>(Limit);
}

void FCorvanePaceLedger::NotePart(int64 Bytes)
{
	constexpr double Share = 0.25;
	UsualBytes = UsualBytes < 0 ? static_cast<double>(Bytes) : UsualBytes + Share * (static_cast<double>(Bytes) - UsualBytes);
}
