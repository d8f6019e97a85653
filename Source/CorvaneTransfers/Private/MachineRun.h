#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "HAL/PlatformTime.h"
#include "Pace/PaceTurn.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Alarm.h"
#include "Threads/Mailbox.h"
#include "TransferRun.h"

/**
 * What the runs of all kinds of transfers do alike: they do what a machine of values says, get letters from other threads, and
 * tell progress and the end. A run is held by the list of running transfers until it is over. Thread: game thread.
 *
 * @tparam Type  the run; has Follow(Step), which does what a step says.
 * @tparam MachineType  has Pause, Continue, Cancel, EndOfProgram, OnWaitOver, IsPaused and GetReport.
 */
template <class Type, class MachineType>
class TCorvaneMachineRun : public FCorvaneTransferRun, public TSharedFromThis<Type>
{
public:
	using FTell = TFunction<void(const FCorvaneTransferReport&)>;

	virtual void SharePace(const TSharedRef<FCorvaneSharedPace>& InPace) override { Turn.Share(InPace); }
	virtual void Pause() override
	{
		Self().Follow(Machine.Pause(Now()));
		TellIfPaused();
	}
	virtual void Continue() override { Self().Follow(Machine.Continue(Now())); }
	virtual void Cancel() override { Self().Follow(Machine.Cancel(Now())); }
	virtual void EndWithProgram() override { Self().Follow(Machine.EndOfProgram(Now())); }
	virtual bool IsPaused() const override { return Machine.IsPaused(); }
	virtual void WhenPaused(TFunction<void()> Tell) override { PauseTeller = MoveTemp(Tell); }
	virtual bool IsOver() const override { return bTold; }
	virtual FCorvaneMailbox& GetMailbox() override { return *Mailbox; }

	/** @return how it stands, with the bytes of the try that runs. */
	virtual FCorvaneTransferReport GetReport() const override
	{
		FCorvaneTransferReport Report = Machine.GetReport();
		Report.TransferredBytes += BytesOfTry();
		return Report;
	}

protected:
	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 * @param OfMachine  what the machine is made with.
	 */
	template <class... Types>
	TCorvaneMachineRun(FTell InTellEnd, TFunction<void()> InTellProgress, const Types&... OfMachine)
		: Machine(OfMachine...)
		, EndTeller(MoveTemp(InTellEnd))
		, ProgressTeller(MoveTemp(InTellProgress))
	{
	}

	static double Now() { return FPlatformTime::Seconds(); }

	/** @return bytes that have moved in the try that runs, and that the machine does not know of yet. */
	virtual int64 BytesOfTry() const = 0;
	/** Notes the end in the log. */
	virtual void LogEnd(const FCorvaneTransferReport& Report) const = 0;

	/** Brings what another thread has to tell to this object, if it lives by then. Thread: any. */
	template <class LetterType>
	void Post(LetterType Letter)
	{
		Mailbox->PostTo(this->AsShared(),
			[Letter = MoveTemp(Letter)](Type& Run) mutable
			{
				Letter(Run);
				Run.TellIfPaused();
			});
	}

	/** Does the first step; an end that it brings is told later. */
	template <class StepType>
	void BeginWith(const StepType& First)
	{
		CorvaneRunningTransfers::Add(this->AsShared());
		Self().Follow(First);
	}

	/** Follows what a letter has led to: no call of a user stands above it, so the end may be told at once. */
	template <class StepType>
	void FollowLetter(const StepType& Step)
	{
		bMayTell = true;
		Self().Follow(Step);
		bMayTell = false;
	}

	void Wait(double Seconds)
	{
		WaitAlarm.Set(Seconds, [Run = this->AsShared()] { Run->Follow(Run->Machine.OnWaitOver(Now())); });
	}

	/** Tells of progress from now on, if anybody listens. */
	void BeginProgress()
	{
		bTellsProgress = true;
		if (ProgressTeller)
		{
			CorvaneRunningTransfers::KeepTicking();
		}
	}

	/** Posted where a user's call may have led here: Start and what ends a transfer that waits tell nothing inside themselves. */
	void TellEnd()
	{
		if (bMayTell)
		{
			return TellEndNow();
		}
		Post([](Type& Run) { Run.TellEndNow(); });
	}

	MachineType Machine;
	FCorvanePaceTurn Turn; // of the part that is moved next, or moves

private:
	Type& Self() { return static_cast<Type&>(*this); }

	void TellIfPaused()
	{
		if (PauseTeller && Machine.IsPaused())
		{
			PauseTeller();
		}
	}

	virtual bool OnProgressTick() override
	{
		const bool bWanted = bTellsProgress && ProgressTeller && !IsOver();
		const int64 Bytes = bWanted ? Machine.GetReport().TransferredBytes + BytesOfTry() : ToldBytes;
		if (Bytes != ToldBytes)
		{
			ToldBytes = Bytes;
			ProgressTeller();
		}
		return bWanted;
	}

	void TellEndNow()
	{
		const TSharedRef<Type> Alive = this->AsShared(); // the list may hold it last
		WaitAlarm.Clear();
		CorvaneRunningTransfers::Remove(*this);
		bTold = true;
		LogEnd(Machine.GetReport());
		if (EndTeller)
		{
			EndTeller(Machine.GetReport());
		}
	}

	FTell EndTeller;
	TFunction<void()> ProgressTeller;
	TFunction<void()> PauseTeller;
	const TSharedRef<FCorvaneMailbox> Mailbox = MakeShared<FCorvaneMailbox>();
	FCorvaneAlarm WaitAlarm;
	bool bTellsProgress = false;
	int64 ToldBytes = -1;
	bool bMayTell = false;
	bool bTold = false; // later than the machine is over
};
