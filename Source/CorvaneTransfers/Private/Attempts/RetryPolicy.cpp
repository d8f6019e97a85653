#include "Attempts/RetryPolicy.h"

#include "Attempts/Answer.h"
#include "Attempts/HttpDate.h"
#include "Misc/Timespan.h"

bool CorvaneRetry::IsPassing(int32 Code)
{
	switch (Code)
	{
	case 408: // the request came too slowly
	case 425: // too early
	case 429: // too many
		return true;
	case 501: // the server cannot do it at all
	case 505:
	case 511: // the network wants somebody to log in first
		return false;
	default:
		return Code >= 500 && Code < 600;
	}
}

double CorvaneRetry::Backoff(int32 Failures, double FirstWait, double LongestWait, double Random)
{
	double Wait = FirstWait;
	for (int32 Failure = 1; Failure < Failures && Wait > 0 && Wait < LongestWait; ++Failure)
	{
		Wait *= 2;
	}
	return FMath::Min(Wait, LongestWait) * Random;
}

double CorvaneRetry::ParseRetryAfter(const FString& Value, const FDateTime& Now)
{
	constexpr double Year = 365.0 * 24 * 60 * 60;
	const int64 Seconds = CorvaneAnswer::ParseNumber(Value);
	if (Seconds >= 0)
	{
		return FMath::Min(static_cast<double>(Seconds), Year);
	}
	const int64 Then = CorvaneHttpDate::Parse(Value).GetTicks();
	if (Then <= 0)
	{
		return -1;
	}
	return FMath::Clamp(static_cast<double>(Then - Now.GetTicks()) / static_cast<double>(ETimespan::TicksPerSecond), 0.0, Year);
}

FCorvaneRetryDecision CorvaneRetry::Decide(const FCorvaneRetryLimits& Limits, int32 Failures, double Asked, double Random)
{
	FCorvaneRetryDecision Decision;
	if (Failures < Limits.Attempts && Asked > Limits.LongestWait)
	{
		Decision.WhyNot =
			FString::Printf(TEXT(" and wants to be left alone for %.0f seconds, which is longer than the longest wait"), Asked);
	}
	else if (Failures < Limits.Attempts)
	{
		const double Spread = Backoff(Failures, Limits.FirstWait, Limits.LongestWait, Random);
		Decision.bAgain = true;
		Decision.WaitSeconds = FMath::Min<double>(FMath::Max<double>(Asked, 0) + Spread, Limits.LongestWait);
	}
	return Decision;
}
