#include "Pace/SharedPace.h"

#include "HAL/PlatformProcess.h"
#include "HAL/PlatformTime.h"
#include "Misc/ScopeLock.h"
#include "Pace/Holding.h"

void FCorvaneSharedPace::SetLimit(int64 BytesPerSecond)
{
	{
		const FScopeLock Lock(&Guard);
		Ledger.SetLimit(FPlatformTime::Seconds(), BytesPerSecond);
	}
	LetGo();
}

int64 FCorvaneSharedPace::PartBytes(double SecondsOfLast) const
{
	const FScopeLock Lock(&Guard);
	return Ledger.PartBytes(SecondsOfLast);
}

TSharedPtr<FCorvanePaceShare> FCorvaneSharedPace::BookIfUnlimited()
{
	if (PartBytes(0) > 0)
	{
		return nullptr;
	}
	return Book(0);
}

int64 FCorvaneSharedPace::Ask(int64 MostBytes, FGo Go)
{
	FWaiting Asked;
	Asked.Number = ++Numbers;
	Asked.MostBytes = MostBytes;
	Asked.Go = MoveTemp(Go);
	Line.Add(MoveTemp(Asked));
	const int64 Number = Numbers;
	LetGo();
	return Number;
}

void FCorvaneSharedPace::Withdraw(int64 Number)
{
	for (int32 Index = 0; Index < Line.Num(); ++Index)
	{
		if (Line[Index].Number == Number)
		{
			const FGo Go = MoveTemp(Line[Index].Go);
			Line.RemoveAt(Index);
			return Go(MakeShared<FCorvanePaceShare>(AsShared(), 0));
		}
	}
}

bool FCorvaneSharedPace::MayGo() const
{
	const FScopeLock Lock(&Guard);
	return Ledger.SecondsUntilFree(FPlatformTime::Seconds()) <= 0;
}

TSharedRef<FCorvanePaceShare> FCorvaneSharedPace::Book(int64 MostBytes)
{
	const FScopeLock Lock(&Guard);
	return MakeShared<FCorvanePaceShare>(AsShared(), Ledger.Book(FPlatformTime::Seconds(), MostBytes));
}

void FCorvaneSharedPace::LetGo()
{
	if (bLettingGo)
	{
		return; // whoever was let go has asked, or ended: the loop below goes on
	}
	bLettingGo = true;
	while (Line.Num() > 0 && MayGo())
	{
		const FWaiting Next = MoveTemp(Line[0]);
		Line.RemoveAt(0);
		Next.Go(Book(Next.MostBytes));
	}
	bLettingGo = false;
	LetGoLater();
}

void FCorvaneSharedPace::LetGoLater()
{
	Alarm.Clear();
	if (Line.IsEmpty())
	{
		return;
	}
	double Seconds = 0;
	{
		const FScopeLock Lock(&Guard);
		Seconds = Ledger.SecondsUntilFree(FPlatformTime::Seconds());
	}
	Alarm.Set(Seconds,
		[Weak = TWeakPtr<FCorvaneSharedPace>(AsShared())]
		{
			if (const TSharedPtr<FCorvaneSharedPace> Self = Weak.Pin())
			{
				Self->LetGo();
			}
		});
}

double FCorvaneSharedPace::Charge(int64 Bytes)
{
	const FScopeLock Lock(&Guard);
	Ledger.Correct(Bytes);
	return Ledger.SecondsUntilFree(FPlatformTime::Seconds());
}

void FCorvaneSharedPace::Settle(int64 Booked, int64 Moved)
{
	{
		const FScopeLock Lock(&Guard);
		Ledger.Correct(FMath::Min<int64>(Moved - Booked, 0)); // what is above it was counted as it came
		if (Moved > 0)
		{
			Ledger.NotePart(Moved);
		}
	}
	LetGo();
}

FCorvanePaceShare::FCorvanePaceShare(const TSharedRef<FCorvaneSharedPace>& InPace, int64 InBooked)
	: Pace(InPace)
	, Booked(InBooked)
{
}

double FCorvanePaceShare::Note(int64 Bytes)
{
	const int64 Before = FMath::Max(Moved, Booked);
	Moved += Bytes;
	return Pace->Charge(FMath::Max<int64>(Moved - Before, 0));
}

void FCorvanePaceShare::Hold(int64 Bytes)
{
	const double Seconds = CorvanePace::ShortOf(Note(Bytes));
	if (Moved > Booked && Seconds > 0)
	{
		FPlatformProcess::Sleep(static_cast<float>(Seconds));
	}
}

void FCorvanePaceShare::Settle()
{
	if (!bSettled)
	{
		bSettled = true;
		Pace->Settle(Booked, Moved);
	}
}
