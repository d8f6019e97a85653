#include "Attempts/TryEnd.h"

#include "Attempts/HttpDate.h"
#include "Attempts/RetryPolicy.h"

ECorvaneTransferOutcome CorvaneTryEnd::OutcomeOf(ECorvaneExchangeEnd End)
{
	switch (End)
	{
	case ECorvaneExchangeEnd::NoConnection:
		return ECorvaneTransferOutcome::NoConnection;
	case ECorvaneExchangeEnd::TimedOut:
		return ECorvaneTransferOutcome::TimedOut;
	case ECorvaneExchangeEnd::Stalled:
		return ECorvaneTransferOutcome::Stalled;
	default:
		return ECorvaneTransferOutcome::Dropped;
	}
}

FString CorvaneTryEnd::ReasonOf(ECorvaneExchangeEnd End)
{
	switch (End)
	{
	case ECorvaneExchangeEnd::NoConnection:
		return TEXT("there is no connection to the server");
	case ECorvaneExchangeEnd::TimedOut:
		return TEXT("the request took too long");
	case ECorvaneExchangeEnd::Stalled:
		return TEXT("the server fell silent");
	default:
		return TEXT("the connection broke off");
	}
}

double CorvaneTryEnd::WaitAskedFor(const FCorvaneAnswer& Answer, const FDateTime& NowUtc)
{
	if (Answer.IsSuccess())
	{
		return -1;
	}
	const FDateTime ServerTime = CorvaneHttpDate::Parse(Answer.Date);
	return CorvaneRetry::ParseRetryAfter(Answer.RetryAfter, ServerTime.GetTicks() > 0 ? ServerTime : NowUtc);
}
