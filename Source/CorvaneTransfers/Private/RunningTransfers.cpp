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
		if (!Transfer.IsOver())
		{
			Transfer.Abandon();
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

void CorvaneRunningTransfers::EndAll(double MostSeconds)
{
	const TArray<TSharedRef<FCorvaneRunningTransfer>> Running = List(); // each leaves the list at its end
	const double Deadline = FPlatformTime::Seconds() + MostSeconds;
	for (const TSharedRef<FCorvaneRunningTransfer>& Transfer : Running)
	{
		Transfer->EndWithProgram();
	}
	for (const TSharedRef<FCorvaneRunningTransfer>& Transfer : Running)
	{
		WaitFor(*Transfer, Deadline);
	}
	List().Empty();
	StopTicking();
}
