#include "Pace/PaceTurn.h"

#include "HAL/PlatformTime.h"

int64 FCorvanePaceTurn::PartBytes() const
{
	return Pace.IsValid() ? Pace->PartBytes(SecondsOfLast) : 0;
}

bool FCorvanePaceTurn::TakeIfUnlimited()
{
	const TSharedPtr<FCorvanePaceShare> Given = Pace.IsValid() ? Pace->BookIfUnlimited() : nullptr;
	if (Given.IsValid())
	{
		Take(Given.ToSharedRef());
	}
	return Given.IsValid() || !Pace.IsValid();
}

void FCorvanePaceTurn::Take(const TSharedRef<FCorvanePaceShare>& Given)
{
	Moving = Given;
	Began = FPlatformTime::Seconds();
}

void FCorvanePaceTurn::Ask(int64 MostBytes, TFunction<void()> Go)
{
	if (TakeIfUnlimited())
	{
		return Go();
	}
	Number = Pace->Ask(MostBytes,
		[this, Go = MoveTemp(Go)](const TSharedRef<FCorvanePaceShare>& Given)
		{
			Take(Given);
			Go();
		});
}

void FCorvanePaceTurn::Withdraw()
{
	if (Pace.IsValid())
	{
		Pace->Withdraw(Number);
	}
}

void FCorvanePaceTurn::Settle()
{
	if (Moving.IsValid())
	{
		Moving->Settle();
		Moving.Reset();
		SecondsOfLast = FPlatformTime::Seconds() - Began;
	}
}
