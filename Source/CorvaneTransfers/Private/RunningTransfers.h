#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"
#include "Threads/Mailbox.h"

/** A transfer that has started and has not told its outcome yet. Thread: game thread. */
class FCorvaneRunningTransfer
{
public:
	virtual ~FCorvaneRunningTransfer() = default;
	/** Ends it soon, with Ended; its bytes stay. May come before its start. */
	virtual void EndWithProgram() = 0;
	/** It is over, and has told so. */
	virtual bool IsOver() const = 0;
	/** It did not end in time, such as for a disk that does not answer. Nothing may be held up by it from now on. */
	virtual void Abandon() = 0;
	/** Ten times a second, once somebody has asked for it. @return true when it is to come again. */
	virtual bool OnProgressTick() { return false; }
	/** Where the threads that work for it leave what they have to tell. */
	virtual FCorvaneMailbox& GetMailbox() = 0;
};

/** All running transfers. Thread: game thread. */
namespace CorvaneRunningTransfers
{
	/** Holds a transfer until it is over and Remove is called. */
	void Add(const TSharedRef<FCorvaneRunningTransfer>& Transfer);
	void Remove(const FCorvaneRunningTransfer& Transfer);
	bool IsEmpty();

	/** Calls OnProgressTick of all, as long as one of them wants it: a ticker for each would cost every frame. */
	void KeepTicking();

	/**
	 * Ends all of them in order and waits until each has dealt with its bytes; those that take longer are abandoned. So are, after a
	 * few rounds, those that are started again and again as soon as they end.
	 */
	void EndAll(double MostSeconds = 5);
	/** @return whether EndAll is under way: what starts now has to be told of the end first. */
	bool AreEnding();
} // namespace CorvaneRunningTransfers
