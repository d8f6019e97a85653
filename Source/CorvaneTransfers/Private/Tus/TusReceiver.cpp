#include "Tus/TusReceiver.h"

#include "Containers/StringConv.h"

namespace CorvaneTusReceiver
{
	/** Of a body that nobody wants so many bytes are let pass to keep the connection. */
	static constexpr int64 MostUnwanted = 4 * 1024;
	static constexpr int32 MostText = 300;

	/** @return the text on one line; nothing of a page, which is not for people who read a report. */
	static FString Readable(const TArray<uint8>& Bytes)
	{
		const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes.GetData()), Bytes.Num());
		const FString Text = FString::ConstructFromPtrSize(Units.Get(), Units.Length());
		FString Line;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			Line.AppendChar(Text[Index] < TEXT(' ') || Text[Index] == 0x7F ? TEXT(' ') : Text[Index]);
		}
		Line = Line.TrimEnd();
		return Line.StartsWith(TEXT("<"), ESearchCase::CaseSensitive) ? FString() : Line;
	}
} // namespace CorvaneTusReceiver

bool FCorvaneTusReceiver::OnAnswer(const FCorvaneAnswer& Answer)
{
	bWantsText = !Answer.IsSuccess();
	return true;
}

bool FCorvaneTusReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	const int64 Room = bWantsText ? CorvaneTusReceiver::MostText - Text.Num() : 0;
	Text.Append(Bytes, static_cast<int32>(FMath::Min<int64>(Number, Room)));
	Seen += Number;
	return Seen <= CorvaneTusReceiver::MostUnwanted;
}

void FCorvaneTusReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	Tell(Result, CorvaneTusReceiver::Readable(Text));
}
