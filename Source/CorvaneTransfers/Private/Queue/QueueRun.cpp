#include "Queue/QueueRun.h"

#include "CorvaneTransferQueue.h"

namespace CorvaneQueueRun
{
	static constexpr float ProgressInterval = 0.1f;
	static constexpr int32 UsualAtOnce = 8;
	static constexpr int32 UsualPerHost = 6;
} // namespace CorvaneQueueRun

FCorvaneQueueRun::FCorvaneQueueRun()
{
	Machine.SetLimits(CorvaneQueueRun::UsualAtOnce, CorvaneQueueRun::UsualPerHost);
	Ended.TotalBytes = 0;
}

void FCorvaneQueueRun::SetOwner(UCorvaneTransferQueue& InOwner, FEars&& InEars)
{
	Owner = TStrongObjectPtr<UCorvaneTransferQueue>(&InOwner);
	Ears = MoveTemp(InEars);
	WatchProgress(); // of transfers that came before
}

UCorvaneTransferQueue* FCorvaneQueueRun::GetOwner() const
{
	return Owner.Get();
}

void FCorvaneQueueRun::SetLimits(int32 MostAtOnce, int32 MostPerHost, int64 BytesPerSecond)
{
	Machine.SetLimits(MostAtOnce, MostPerHost);
	Pace->SetLimit(BytesPerSecond);
	for (const int64 Ticket : TArray<int64>(Begun))
	{
		Entries.Find(Ticket)->Run->OnPaceChanged();
	}
	Fill();
}

int64 FCorvaneQueueRun::Enter(UCorvaneTransfer& Transfer, const FString& Host, int32 Priority)
{
	const int64 Ticket = ++Tickets;
	FEntry Entry;
	Entry.Transfer = &Transfer;
	Entries.Add(Ticket, Entry);
	if (bLetGo || CorvaneRunningTransfers::AreEnding())
	{
		EndBeforeItsStart(Ticket);
		return Ticket;
	}
	Machine.Add(Ticket, Host, Priority);
	Fill();
	WatchProgress();
	return Ticket;
}

/** Starts as many as may. */
void FCorvaneQueueRun::Fill()
{
	int64 Ticket = 0;
	while (Machine.StartNext(Ticket))
	{
		Begin(Ticket);
	}
}

void FCorvaneQueueRun::Begin(int64 Ticket)
{
	const bool bHasBegun = Entries.Find(Ticket)->HasBegun();
	const TSharedRef<FCorvaneTransferRun> Run = NeedRun(Ticket);
	bHasBegun ? Run->Continue() : Run->Start();
}

/** @return what moves the transfer; it may not have begun yet. */
TSharedRef<FCorvaneTransferRun> FCorvaneQueueRun::NeedRun(int64 Ticket)
{
	FEntry& Entry = *Entries.Find(Ticket);
	if (Entry.HasBegun())
	{
		return Entry.Run.ToSharedRef();
	}
	Entry.Transfer->NeedRun();
	const TSharedRef<FCorvaneTransferRun> Run = Entry.Transfer->Run.ToSharedRef();
	Entry.Run = Run;
	Begun.Add(Ticket);
	Run->SharePace(Pace);
	Run->WhenPaused(
		[Weak = TWeakPtr<FCorvaneQueueRun>(AsShared()), Ticket]
		{
			if (const TSharedPtr<FCorvaneQueueRun> Self = Weak.Pin())
			{
				Self->OnStopped(Ticket);
			}
		});
	return Run;
}

void FCorvaneQueueRun::Leave(int64 Ticket, const FCorvaneTransferReport& Report)
{
	const FEntry* Entry = Entries.Find(Ticket);
	if (!Entry)
	{
		return;
	}
	UCorvaneTransfer& Transfer = *Entry->Transfer;
	Entries.Remove(Ticket);
	Begun.RemoveSingle(Ticket);
	Machine.Remove(Ticket);
	++(Report.Outcome == ECorvaneTransferOutcome::Succeeded ? Ended.Done : Ended.Failed);
	Count(Report, Ended);
	Fill();
	if (Ears.End)
	{
		Ears.End(Transfer, Report);
	}
	TellIfIdle();
}

void FCorvaneQueueRun::TellIfIdle()
{
	if (!HasPendingWork() && Ears.Idle)
	{
		Ears.Idle(GetReport());
	}
}

void FCorvaneQueueRun::NoMoreToCome()
{
	--Expected;
	TellIfIdle();
}

void FCorvaneQueueRun::PauseOne(int64 Ticket)
{
	const FEntry* Entry = Entries.Find(Ticket);
	if (!Entry)
	{
		return;
	}
	const TSharedPtr<FCorvaneTransferRun> Run = Entry->Run;
	Machine.Park(Ticket);
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

/** A request that a pause lets end counts as running until then: the next one would be one too many. */
void FCorvaneQueueRun::OnStopped(int64 Ticket)
{
	Machine.OnStopped(Ticket);
	Fill();
}

void FCorvaneQueueRun::ContinueOne(int64 Ticket)
{
	const bool bGoesOn = Machine.IsStopping(Ticket) && !Machine.IsPaused();
	Machine.Wake(Ticket);
	if (bGoesOn)
	{
		Begin(Ticket);
	}
	Fill();
}

void FCorvaneQueueRun::CancelOne(int64 Ticket)
{
	const FEntry* Entry = Entries.Find(Ticket);
	if (!Entry)
	{
		return;
	}
	const bool bHasBegun = Entry->HasBegun();
	const TSharedRef<FCorvaneTransferRun> Run = NeedRun(Ticket);
	Run->Cancel();
	if (!bHasBegun) // so it tells its outcome, and sends nothing
	{
		Machine.Remove(Ticket);
		Run->Start();
	}
}

TArray<int64> FCorvaneQueueRun::TicketsOfAll() const
{
	TArray<int64> All;
	for (const TPair<int64, FEntry>& Entry : Entries)
	{
		All.Add(Entry.Key);
	}
	return All;
}

void FCorvaneQueueRun::CancelAll()
{
	for (const int64 Ticket : TicketsOfAll())
	{
		CancelOne(Ticket);
	}
}

void FCorvaneQueueRun::Pause()
{
	Machine.Pause();
	for (const int64 Ticket : TArray<int64>(Begun))
	{
		Entries.Find(Ticket)->Run->Pause();
	}
}

void FCorvaneQueueRun::Continue()
{
	Machine.Continue();
	for (const int64 Ticket : TArray<int64>(Begun))
	{
		if (Machine.IsRunning(Ticket))
		{
			Entries.Find(Ticket)->Run->Continue();
		}
	}
	Fill();
}

void FCorvaneQueueRun::LetGoOfAll()
{
	bLetGo = true;
	for (const int64 Ticket : TicketsOfAll())
	{
		Machine.Remove(Ticket);
		if (!Entries.Find(Ticket)->HasBegun())
		{
			EndBeforeItsStart(Ticket);
		}
	}
}

/** So it tells its outcome, and begins nothing. */
void FCorvaneQueueRun::EndBeforeItsStart(int64 Ticket)
{
	const TSharedRef<FCorvaneTransferRun> Run = NeedRun(Ticket);
	Run->EndWithProgram();
	Run->Start();
}

void FCorvaneQueueRun::Count(const FCorvaneTransferReport& Report, FCorvaneQueueReport& Sum) const
{
	const int64 Bytes = Report.TransferredBytes + Report.TakenOverBytes;
	const bool bOver = Report.Outcome != ECorvaneTransferOutcome::Running;
	const int64 Total = bOver ? Bytes : Report.TotalBytes;
	Sum.Bytes += Total < 0 ? Bytes : FMath::Min(Bytes, Total); // some may have come twice
	Sum.TotalBytes = Sum.TotalBytes < 0 || Total < 0 ? -1 : Sum.TotalBytes + Total;
}

FCorvaneQueueReport FCorvaneQueueRun::GetReport() const
{
	FCorvaneQueueReport Report = Ended;
	for (const int64 Ticket : Begun)
	{
		Count(Entries.Find(Ticket)->Run->GetReport(), Report);
	}
	Report.Waiting = Machine.NumWaiting();
	Report.Running = Machine.NumRunning();
	Report.Paused = Machine.NumParked();
	Report.TotalBytes = Entries.Num() > Begun.Num() ? -1 : Report.TotalBytes;
	return Report;
}

void FCorvaneQueueRun::WatchProgress()
{
	if (Ears.Progress && Entries.Num() > 0 && !ProgressTicker.IsValid())
	{
		ProgressTicker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
																  [Weak = TWeakPtr<FCorvaneQueueRun>(AsShared())](float)
																  {
																	  const TSharedPtr<FCorvaneQueueRun> Self = Weak.Pin();
																	  return Self.IsValid() && Self->OnProgressTick();
																  }),
			CorvaneQueueRun::ProgressInterval);
	}
}

/** @return false when there is nothing to watch any more. */
bool FCorvaneQueueRun::OnProgressTick()
{
	const FCorvaneQueueReport Report = GetReport();
	if (Report.Bytes != ToldBytes)
	{
		ToldBytes = Report.Bytes;
		Ears.Progress(Report);
	}
	if (HasPendingWork())
	{
		return true;
	}
	ProgressTicker = FTSTicker::FDelegateHandle();
	return false;
}
