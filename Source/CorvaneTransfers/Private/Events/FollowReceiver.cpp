#include "Events/FollowReceiver.h"

#include "Events/FollowMachine.h"

namespace CorvaneFollowReceiver
{
	/** Of a body that nobody wants, such as an error's page, so many bytes are let pass to keep the connection. */
	static constexpr int64 MostUnwanted = 4 * 1024;
} // namespace CorvaneFollowReceiver

FCorvaneFollowReceiver::FCorvaneFollowReceiver(const TSharedRef<FCorvaneByteBuffer>& InBuffer, FTold InTold)
	: Buffer(InBuffer)
	, Told(MoveTemp(InTold))
{
}

bool FCorvaneFollowReceiver::OnAnswer(const FCorvaneAnswer& Answer)
{
	bStream = CorvaneFollow::JudgeAnswer(Answer) == CorvaneFollow::EVerdict::Stream;
	if (bStream)
	{
		Told.Opened(Answer);
	}
	return true;
}

bool FCorvaneFollowReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	if (!bStream)
	{
		Unwanted += Number;
		return Unwanted <= CorvaneFollowReceiver::MostUnwanted;
	}
	// All exchanges are held up as long as there is no room. As long as events are being told that is what keeps them from
	// filling memory; but a game thread that has stopped to tell them may itself be waiting for another exchange.
	constexpr uint32 Milliseconds = CorvaneFollow::PatienceSeconds * 1000;
	bool bFirst = false;
	const bool bTaken = Buffer->Put(Bytes, Number, bFirst, Milliseconds);
	if (bTaken && bFirst)
	{
		Told.Ready();
	}
	return bTaken;
}

void FCorvaneFollowReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	Told.Ended(Result);
}
