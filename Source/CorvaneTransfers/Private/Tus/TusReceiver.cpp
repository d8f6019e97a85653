#include "Tus/TusReceiver.h"

#include "Attempts/Utf8Text.h"

namespace CorvaneTusReceiver
{
	static constexpr int32 MostText = 1024;
	/** Of a body so many bytes are let pass to keep the connection. */
	static constexpr int64 MostSeen = 4 * 1024;
} // namespace CorvaneTusReceiver

bool FCorvaneTusReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	const int64 Room = CorvaneTusReceiver::MostText - Text.Num();
	Text.Append(Bytes, static_cast<int32>(FMath::Min<int64>(Number, Room)));
	Seen += Number;
	return Seen <= CorvaneTusReceiver::MostSeen;
}

void FCorvaneTusReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	Tell(Result, CorvaneUtf8::Decode(Text.GetData(), Text.Num()));
}
