#include "Upload/UploadReceiver.h"

#include "Attempts/Utf8Text.h"

namespace CorvaneUploadReceiver
{
	/** Behind the bytes that are kept, so many more are let pass to keep the connection. */
	static constexpr int64 MostDropped = 4 * 1024;
} // namespace CorvaneUploadReceiver

FCorvaneUploadReceiver::FCorvaneUploadReceiver(const TSharedRef<FCorvaneBodyStream>& InBody, int32 InLimit, FTell InTell)
	: Body(InBody)
	, Limit(InLimit)
	, Tell(MoveTemp(InTell))
{
}

bool FCorvaneUploadReceiver::OnAnswer(const FCorvaneAnswer&)
{
	return true;
}

bool FCorvaneUploadReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	const int64 Taken = FMath::Min<int64>(Number, Limit - Kept.Num());
	Kept.Append(Bytes, static_cast<int32>(Taken));
	Dropped += Number - Taken;
	return Dropped <= CorvaneUploadReceiver::MostDropped;
}

void FCorvaneUploadReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	FCorvaneUploadTryEnd End;
	End.Exchange = Result;
	End.Body = Body->Finish();
	End.Answer = CorvaneUtf8::Decode(Kept.GetData(), Kept.Num());
	Tell(End);
}
