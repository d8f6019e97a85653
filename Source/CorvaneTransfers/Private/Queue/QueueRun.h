#pragma once

#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "CorvaneQueueReport.h"
#include "CorvaneTransfer.h"
#include "Pace/SharedPace.h"
#include "Queue/QueueMachine.h"
#include "Templates/Function.h"
#include "TransferRun.h"
#include "UObject/StrongObjectPtr.h"

class UCorvaneTransferQueue;

/**
 * A queue of transfers: does what the machine says, and tells it what came of it. Transfers are held by themselves until their
 * outcome. Thread: game thread.
 */
class FCorvaneQueueRun : public TSharedFromThis<FCorvaneQueueRun>
{
public:
	/** What is told; each may be unset, and may call whatever this class offers. */
	struct FEars
	{
		TFunction<void(const FCorvaneQueueReport&)> Progress;
		TFunction<void(UCorvaneTransfer&, const FCorvaneTransferReport&)> End;
		TFunction<void(const FCorvaneQueueReport&)> Idle;
	};

	FCorvaneQueueRun();
	/** @param InOwner  what stands for this queue in scripts; it is kept until the end of the program. */
	void SetOwner(UCorvaneTransferQueue& InOwner, FEars&& InEars);
	/** @return null when there is none. */
	UCorvaneTransferQueue* GetOwner() const;
	void SetLimits(int32 MostAtOnce, int32 MostPerHost, int64 BytesPerSecond);

	/** Takes a transfer up, which starts now or when its turn has come. @return its ticket. */
	int64 Enter(UCorvaneTransfer& Transfer, const FString& Host, int32 Priority);
	/** A transfer has told its outcome. */
	void Leave(int64 Ticket, const FCorvaneTransferReport& Report);

	void PauseOne(int64 Ticket);
	void ContinueOne(int64 Ticket);
	/** One that waits is started and ended at once: so it tells its outcome as every other does. */
	void CancelOne(int64 Ticket);
	/** Whether it was paused by itself, and stands still. */
	bool IsHeld(int64 Ticket) const { return Machine.IsParked(Ticket); }

	void Pause();
	void Continue();
	void CancelAll();
	bool IsPaused() const { return Machine.IsPaused(); }
	FCorvaneQueueReport GetReport() const;

	/** More transfers may come from elsewhere: it is not idle before as many calls of NoMoreToCome. */
	void ExpectMore() { ++Expected; }
	void NoMoreToCome();
	bool HasPendingWork() const { return Entries.Num() > 0 || Expected > 0; }

	/** The program ends: what waits is started, so that it is ended like what runs. */
	void LetGoOfAll();

private:
	struct FEntry
	{
		UCorvaneTransfer* Transfer = nullptr; // rooted until it has told its outcome
		TSharedPtr<FCorvaneTransferRun> Run; // null until it begins

		bool HasBegun() const { return Run.IsValid(); }
	};

	void Fill();
	void Begin(int64 Ticket);
	void OnStopped(int64 Ticket);
	void EndBeforeItsStart(int64 Ticket);
	TSharedRef<FCorvaneTransferRun> NeedRun(int64 Ticket);
	void TellIfIdle();
	TArray<int64> TicketsOfAll() const;
	void Count(const FCorvaneTransferReport& Report, FCorvaneQueueReport& Sum) const;
	void WatchProgress();
	bool OnProgressTick();

	FCorvaneQueueMachine Machine;
	const TSharedRef<FCorvaneSharedPace> Pace = MakeShared<FCorvaneSharedPace>();
	TStrongObjectPtr<UCorvaneTransferQueue> Owner;
	FEars Ears;
	TMap<int64, FEntry> Entries; // those without an outcome
	TArray<int64> Begun; // of those
	FCorvaneQueueReport Ended; // of those that have ended
	int64 Tickets = 0;
	int32 Expected = 0;
	bool bLetGo = false;
	int64 ToldBytes = 0;
	FTSTicker::FDelegateHandle ProgressTicker;
};
