#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Pace/PaceLedger.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Alarm.h"

class FCorvanePaceShare;

/**
 * Bytes per second that transfers share. Each asks before it moves a part, and they are let go in the order in which they asked:
 * none has to know of the others. Hold it by a shared pointer. Thread: game thread, but for what says otherwise.
 */
class FCorvaneSharedPace : public TSharedFromThis<FCorvaneSharedPace>
{
public:
	using FGo = TFunction<void(const TSharedRef<FCorvanePaceShare>&)>;

	/** @param BytesPerSecond  0 = no limit. Whoever waits is let go by the new one. */
	void SetLimit(int64 BytesPerSecond);

	/**
	 * @param SecondsOfLast  that the last part of the same transfer took: where the way to the server is long, parts are larger.
	 * @return bytes of one part; 0 = there is no limit, and parts are of no use.
	 */
	int64 PartBytes(double SecondsOfLast) const;

	/** @return leave to move any number of bytes; null = there is a limit, so Ask. */
	TSharedPtr<FCorvanePaceShare> BookIfUnlimited();

	/**
	 * Asks for leave to move a part.
	 * @param MostBytes  that it may have.
	 * @param Go  is called when it may move, maybe inside this call.
	 * @return a number for Withdraw.
	 */
	int64 Ask(int64 MostBytes, FGo Go);

	/** Lets one that waits go at once: it will not move anything. Harmless when it has gone. */
	void Withdraw(int64 Number);

private:
	friend class FCorvanePaceShare;

	struct FWaiting
	{
		int64 Number = 0;
		int64 MostBytes = 0;
		FGo Go;
	};

	/** More has moved than was booked. @return seconds until the next part may move. Thread: any. */
	double Charge(int64 Bytes);
	void Settle(int64 Booked, int64 Moved);
	bool MayGo() const;
	TSharedRef<FCorvanePaceShare> Book(int64 MostBytes);
	void LetGo();
	void LetGoLater();

	mutable FCriticalSection Guard;
	FCorvanePaceLedger Ledger CORVANE_GUARDED_BY(Guard);
	TArray<FWaiting> Line;
	int64 Numbers = 0;
	bool bLettingGo = false;
	FCorvaneAlarm Alarm;
};

/** What one part may move. Thread: any, one at a time, but for Settle. */
class FCorvanePaceShare
{
public:
	FCorvanePaceShare(const TSharedRef<FCorvaneSharedPace>& InPace, int64 InBooked); // use FCorvaneSharedPace::Ask

	/** So many bytes have moved. @return seconds that whoever can hold them up should do so for. */
	double Note(int64 Bytes);

	/**
	 * The same for a body that nothing else can hold up: what it has beyond the part that had its turn sleeps, but for 20 ms at
	 * most, since others wait for its thread.
	 */
	void Hold(int64 Bytes);

	/** No byte moves any more: others may have what is left. A second call does nothing. Thread: game thread. */
	void Settle();

private:
	const TSharedRef<FCorvaneSharedPace> Pace;
	const int64 Booked;
	int64 Moved = 0;
	bool bSettled = false;
};
