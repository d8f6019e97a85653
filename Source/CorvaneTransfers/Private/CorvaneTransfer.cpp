#include "CorvaneTransfer.h"

#include "Queue/QueueRun.h"
#include "Queue/Queues.h"
#include "RunningTransfers.h"
#include "TransferRun.h"

bool UCorvaneTransfer::HasPendingWork()
{
	return !CorvaneRunningTransfers::IsEmpty() || CorvaneQueues::HavePendingWork();
}

TSharedPtr<FCorvaneTransferRun> UCorvaneTransfer::MakeRun(FTell, TFunction<void()>)
{
	return nullptr; // of the class's default object only
}

void UCorvaneTransfer::Activate()
{
	if (bActivated)
	{
		return; // it was started once
	}
	bActivated = true;
	const FQueueWish Wish = GetQueueWish();
	if (!Wish.Queue.IsEmpty())
	{
		AddToRoot();
		Queue = CorvaneQueues::Get(Wish.Queue);
		Ticket = Queue->Enter(*this, Wish.Host, Wish.Priority);
		return;
	}
	NeedRun();
	if (Run.IsValid())
	{
		AddToRoot(); // until its outcome: a graph that is gone does not end a transfer
		if (CorvaneRunningTransfers::AreEnding())
		{
			Run->EndWithProgram(); // so it tells its outcome, and begins nothing
		}
		Run->Start();
	}
}

void UCorvaneTransfer::NeedRun()
{
	if (!Run.IsValid() && Outcome.Outcome == ECorvaneTransferOutcome::Running)
	{
		Run = MakeRun([this](const FCorvaneTransferReport& Report) { End(Report); }, [this] { TellProgress(); });
	}
}

void UCorvaneTransfer::TellProgress()
{
	if (!OnProgress.IsBound() && !NativeMove)
	{
		return; // a report for nobody costs as much as one for somebody
	}
	const FCorvaneTransferReport Report = GetReport();
	OnProgress.Broadcast(Report);
	if (NativeMove)
	{
		NativeMove(Report);
	}
}

void UCorvaneTransfer::End(const FCorvaneTransferReport& Report)
{
	Outcome = Report;
	Run.Reset();
	(Outcome.Outcome == ECorvaneTransferOutcome::Succeeded ? OnSuccess : OnFail).Broadcast(Outcome);
	if (NativeEnd)
	{
		NativeEnd(Outcome);
	}
	if (Queue.IsValid())
	{
		Queue->Leave(Ticket, Outcome);
	}
	RemoveFromRoot();
	SetReadyToDestroy();
}

void UCorvaneTransfer::Pause()
{
	if (Queue.IsValid())
	{
		Queue->PauseOne(Ticket);
	}
	else if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneTransfer::Continue()
{
	if (Queue.IsValid())
	{
		Queue->ContinueOne(Ticket);
	}
	else if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneTransfer::Cancel()
{
	if (Queue.IsValid())
	{
		Queue->CancelOne(Ticket);
	}
	else if (Run.IsValid())
	{
		Run->Cancel();
	}
}

FCorvaneTransferReport UCorvaneTransfer::GetReport() const
{
	if (bActivated)
	{
		const_cast<UCorvaneTransfer*>(this)->NeedRun(); // of one that waits
	}
	return Run.IsValid() ? Run->GetReport() : Outcome;
}

bool UCorvaneTransfer::IsPaused() const
{
	const bool bIsHeld = Queue.IsValid() && Outcome.Outcome == ECorvaneTransferOutcome::Running && Queue->IsHeld(Ticket);
	return bIsHeld || (Run.IsValid() && Run->IsPaused());
}
