#include "Events/FollowRun.h"

#include "Attempts/Address.h"
#include "Attempts/Utf8Text.h"
#include "Containers/StringConv.h"
#include "Events/FollowOptions.h"
#include "Events/FollowReceiver.h"
#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"

namespace CorvaneFollowRun
{
	/** Of a frame, after which events wait for the next one. */
	static constexpr double SecondsOfFrame = 0.005;

	static double Now()
	{
		return FPlatformTime::Seconds();
	}

	static FString Decode(const TArray<uint8>& Text)
	{
		return CorvaneUtf8::Decode(Text.GetData(), Text.Num());
	}
} // namespace CorvaneFollowRun

FCorvaneFollowRun::FCorvaneFollowRun(const FString& InURL, const FCorvaneFollowOptions& InOptions, FEars InEars)
	: URL(InURL)
	, Options(InOptions)
	, Ears(MoveTemp(InEars))
	, Headers(InOptions.Headers)
	, Machine(InURL, InOptions)
	, Parser(InOptions.MostEventBytes)
{
	const FTCHARToUTF8 LastID(*InOptions.LastEventID, InOptions.LastEventID.Len());
	Parser.SetLastID(reinterpret_cast<const uint8*>(LastID.Get()), LastID.Length());
}

void FCorvaneFollowRun::Post(TUniqueFunction<void(FCorvaneFollowRun&)> Letter)
{
	Mailbox->PostTo(AsShared(), MoveTemp(Letter));
}

void FCorvaneFollowRun::Start()
{
	CorvaneRunningTransfers::Add(AsShared());
	const FCorvaneFollowStep First = Machine.Start(CorvaneFollowRun::Now(), CorvaneFollow::FindFault(URL, Options));
	Post([First](FCorvaneFollowRun& Self) { Self.Follow(First); }); // nothing is told inside this call
}

/** What has arrived is told after the pause. */
void FCorvaneFollowRun::Pause()
{
	Follow(Machine.Pause(CorvaneFollowRun::Now()));
}

void FCorvaneFollowRun::Continue()
{
	Follow(Machine.Continue(CorvaneFollowRun::Now()));
	TellEvents();
}

void FCorvaneFollowRun::Cancel()
{
	Follow(Machine.Cancel(CorvaneFollowRun::Now()));
	TellEvents(); // there are none any more, but the exchange may have ended while it was paused
}

void FCorvaneFollowRun::Abandon()
{
	if (Buffer.IsValid())
	{
		Buffer->Close();
	}
}

void FCorvaneFollowRun::EndWithProgram()
{
	Follow(Machine.EndOfProgram(CorvaneFollowRun::Now()));
	TellEvents();
}

void FCorvaneFollowRun::SetHeader(const FString& Name, const FString& Value)
{
	if (Value.IsEmpty())
	{
		Headers.Remove(Name);
	}
	else
	{
		Headers.Add(Name, Value);
	}
}

FString FCorvaneFollowRun::GetLastEventID() const
{
	return CorvaneFollowRun::Decode(Parser.GetLastID());
}

FCorvaneTransferReport FCorvaneFollowRun::GetReport() const
{
	FCorvaneTransferReport Report = Machine.GetReport();
	Report.TransferredBytes += BytesOfTry;
	return Report;
}

void FCorvaneFollowRun::Follow(const FCorvaneFollowStep& Step)
{
	switch (Step.Action)
	{
	case ECorvaneFollowAction::None:
		return;
	case ECorvaneFollowAction::Prepare:
		return Prepare();
	case ECorvaneFollowAction::Ask:
		return Ask();
	case ECorvaneFollowAction::Stop:
		return Stop();
	case ECorvaneFollowAction::Wait:
		return Wait(Step.WaitSeconds);
	case ECorvaneFollowAction::Tell:
		return Post([](FCorvaneFollowRun& Self) { Self.TellEnd(); }); // a cancel tells nothing inside its call
	}
}

void FCorvaneFollowRun::Prepare()
{
	if (Ears.Prepare && !Machine.IsEnding())
	{
		Ears.Prepare(Machine.GetReport());
	}
	Follow(Machine.OnPrepared(CorvaneFollowRun::Now(), CorvaneFollow::FindHeaderFault(Headers)));
}

void FCorvaneFollowRun::Ask()
{
	Parser.BeginStream();
	Buffer = MakeShared<FCorvaneByteBuffer>();
	FCorvaneFollowReceiver::FTold Told;
	Told.Opened = [Self = AsShared()](const FCorvaneAnswer& Answer)
	{ Self->Post([Answer](FCorvaneFollowRun& Run) { Run.OnOpened(Answer); }); };
	Told.Ready = [Self = AsShared()] { Self->Post([](FCorvaneFollowRun& Run) { Run.TellEvents(); }); };
	Told.Ended = [Self = AsShared()](const FCorvaneExchangeResult& Ended)
	{ Self->Post([Ended](FCorvaneFollowRun& Run) { Run.OnEnded(Ended); }); };
	Exchange = FCorvaneExchange::Start(CorvaneFollow::MakeRequest(URL, Options, Headers, GetLastEventID()),
		MakeShared<FCorvaneFollowReceiver>(Buffer.ToSharedRef(), MoveTemp(Told)));
}

/** What is already here is kept for the end of a pause; what comes until the buffer is closed is as if it had not been sent. */
void FCorvaneFollowRun::Stop()
{
	TArray<uint8> Rest;
	if (Buffer->Take(Rest))
	{
		Bytes.Append(Rest);
	}
	Buffer->Close();
	if (Exchange.IsValid())
	{
		Exchange->Cancel();
	}
}

void FCorvaneFollowRun::Wait(double Seconds)
{
	WaitAlarm.Set(Seconds, [Self = AsShared()] { Self->Follow(Self->Machine.OnWaitOver(CorvaneFollowRun::Now())); });
}

void FCorvaneFollowRun::OnOpened(const FCorvaneAnswer& Answer)
{
	Machine.OnAnswer(CorvaneFollowRun::Now(), Answer);
	if (Ears.Open && Machine.MayTell())
	{
		Ears.Open(Machine.GetReport());
	}
}

void FCorvaneFollowRun::OnEnded(const FCorvaneExchangeResult& Ended)
{
	Exchange.Reset();
	Result = Ended;
	bEnded = true;
	TellEvents();
}

/** Tells as many events as a frame has time for; behind the last one of a try, its end. */
void FCorvaneFollowRun::TellEvents()
{
	if (bTelling)
	{
		return; // a handler has called what called this: whoever called the handler goes on
	}
	bTelling = true;
	const bool bToldAll = TellSome();
	bTelling = false;
	if (!bToldAll)
	{
		GoOnInNextFrame();
	}
	else if (bEnded && (Machine.IsEnding() || !HasBytes()))
	{
		CloseTry();
	}
}

/** @return false when there was not the time for all. */
bool FCorvaneFollowRun::TellSome()
{
	const double Until = CorvaneFollowRun::Now() + CorvaneFollowRun::SecondsOfFrame;
	while (Machine.MayTell() && HasBytes())
	{
		if (CorvaneFollowRun::Now() >= Until)
		{
			return false;
		}
		ReadOne();
	}
	return true;
}

bool FCorvaneFollowRun::HasBytes()
{
	if (BytesRead == Bytes.Num())
	{
		BytesRead = 0;
		Bytes.Reset();
		return Buffer.IsValid() && Buffer->Take(Bytes);
	}
	return true;
}

void FCorvaneFollowRun::ReadOne()
{
	int64 Taken = 0;
	const ECorvaneEventStep Step = Parser.Read(Bytes.GetData() + BytesRead, Bytes.Num() - BytesRead, Taken);
	BytesRead += static_cast<int32>(Taken);
	BytesOfTry += Taken;
	if (Step == ECorvaneEventStep::TooLong)
	{
		Follow(Machine.OnTooLong(CorvaneFollowRun::Now()));
	}
	else if (Step == ECorvaneEventStep::Event)
	{
		TellEvent();
	}
}

void FCorvaneFollowRun::TellEvent()
{
	using namespace CorvaneFollowRun;
	Machine.OnEvent();
	if (Ears.Event)
	{
		const FString Type = Parser.GetType().IsEmpty() ? FString(TEXT("message")) : Decode(Parser.GetType());
		Ears.Event(Decode(Parser.GetLastID()), Type, Decode(Parser.GetData()));
	}
}

void FCorvaneFollowRun::GoOnInNextFrame()
{
	Buffer->KeepWaiting();
	FrameAlarm.Set(0, [Self = AsShared()] { Self->TellEvents(); });
}

void FCorvaneFollowRun::CloseTry()
{
	bEnded = false;
	BytesOfTry = 0;
	Bytes.Empty();
	BytesRead = 0;
	Buffer.Reset();
	FCorvaneFollowTryEnd End;
	End.Exchange = Result;
	End.RetrySeconds = Parser.GetRetry() < 0 ? -1 : static_cast<double>(Parser.GetRetry()) / 1000;
	End.LastEventID = GetLastEventID();
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	Follow(Machine.OnTryEnded(CorvaneFollowRun::Now(), End));
}

void FCorvaneFollowRun::TellEnd()
{
	const TSharedRef<FCorvaneFollowRun> Self = AsShared(); // the list may hold it last
	WaitAlarm.Clear();
	FrameAlarm.Clear();
	CorvaneRunningTransfers::Remove(*this);
	bTold = true;
	const FCorvaneTransferReport& Report = Machine.GetReport();
	UE_LOG(LogTemp, Display, TEXT("Events: %s, %lld bytes, %d attempts. %s"), *CorvaneAddress::ForLog(URL), Report.TransferredBytes,
		Report.Attempts, *Report.Sentence);
	if (Ears.Close)
	{
		Ears.Close(Report);
	}
}
