#include "RunningTransfers.h"

#include "Containers/Ticker.h"
#include "HAL/PlatformTime.h"

namespace CorvaneRunningTransfers
{
	static TArray<TSharedRef<FCorvaneRunningTransfer>>& List()
	{
		static TArray<TSharedRef<FCorvaneRunningTransfer>> Transfers;
		return Transfers;
	}

	static FTSTicker::FDelegateHandle& Ticker()
	{
		static FTSTicker::FDelegateHandle Handle;
		return Handle;
	}

	static bool& Ending()
	{
		static bool bEnding = false;
		return bEnding;
	}

	static void StopTicking()
	{
		FTSTicker::RemoveTicker(Ticker());
		Ticker() = FTSTicker::FDelegateHandle();
	}

	static bool Tick()
	{
		bool bAgain = false;
		for (int32 Index = 0; Index < List().Num(); ++Index) // those that are started meanwhile, too
		{
			const TSharedRef<FCorvaneRunningTransfer> Transfer = List()[Index];
			bAgain |= Transfer->OnProgressTick();
		}
		if (!bAgain)
		{
			Ticker() = FTSTicker::FDelegateHandle();
		}
		return bAgain;
	}

	/** No task comes to the game thread any more, so it reads the mail itself. */
	static void WaitFor(FCorvaneRunningTransfer& Transfer, double Deadline)
	{
		while (!Transfer.IsOver() && FPlatformTime::Seconds() < Deadline)
		{
			Transfer.GetMailbox().WaitForPost(10);
			Transfer.GetMailbox().Open();
		}
	}

	/** Ends those that run now; their handlers may start others. */
	static void EndRound(double Deadline)
	{
		const TArray<TSharedRef<FCorvaneRunningTransfer>> Running = List(); // each leaves the list at its end
		for (const TSharedRef<FCorvaneRunningTransfer>& Transfer : Running)
		{
			Transfer->EndWithProgram();
		}
		for (const TSharedRef<FCorvaneRunningTransfer>& Transfer : Running)
		{
			WaitFor(*Transfer, Deadline);
		}
	}
} // namespace CorvaneRunningTransfers

void CorvaneRunningTransfers::Add(const TSharedRef<FCorvaneRunningTransfer>& Transfer)
{
	List().Add(Transfer);
}

void CorvaneRunningTransfers::Remove(const FCorvaneRunningTransfer& Transfer)
{
	for (int32 Index = 0; Index < List().Num(); ++Index)
	{
		if (&List()[Index].Get() == &Transfer)
		{
			List().RemoveAt(Index);
			break;
		}
	}
	if (List().IsEmpty())
	{
		StopTicking();
	}
}

void CorvaneRunningTransfers::KeepTicking()
{
	constexpr float Interval = 0.1f;
	if (!Ticker().IsValid())
	{
		Ticker() = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda([](float) { return Tick(); }), Interval);
	}
}

bool CorvaneRunningTransfers::IsEmpty()
{
	return List().IsEmpty();
}

bool CorvaneRunningTransfers::AreEnding()
{
	return Ending();
}

void CorvaneRunningTransfers::EndAll(double MostSeconds)
{
	constexpr int32 MostRounds = 10; // a handler that always starts again would use up all the time
	const double Deadline = FPlatformTime::Seconds() + MostSeconds;
	Ending() = true;
	for (int32 Round = 0; Round < MostRounds && !List().IsEmpty() && FPlatformTime::Seconds() < Deadline; ++Round)
	{
		EndRound(Deadline);
	}
	Ending() = false;
	for (const TSharedRef<FCorvaneRunningTransfer>& Transfer : List())
	{
		Transfer->Abandon();
	}
	List().Empty();
	StopTicking();
}
