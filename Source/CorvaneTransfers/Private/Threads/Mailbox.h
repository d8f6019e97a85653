#pragma once

#include "Containers/Queue.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/PooledWait.h"

/**
 * What other threads have to tell on the game thread, in the order in which they tell it. At the end of the program, when no
 * task runs any more, the game thread opens it by itself. Hold it by a shared pointer.
 */
class FCorvaneMailbox : public TSharedFromThis<FCorvaneMailbox>
{
public:
	/** Thread: any. */
	void Post(TUniqueFunction<void()> Letter);

	/**
	 * The same with a letter to an object, which gets it if it lives by then: one that nobody reads any more must not keep alive
	 * what holds the box. Thread: any.
	 * @tparam LetterType  is called with a Type&, once.
	 */
	template <class Type, class LetterType>
	void PostTo(const TSharedRef<Type>& Reader, LetterType Letter)
	{
		Post(
			[Weak = TWeakPtr<Type>(Reader), Letter = MoveTemp(Letter)]() mutable
			{
				if (const TSharedPtr<Type> Alive = Weak.Pin())
				{
					Letter(*Alive);
				}
			});
	}

	/** Reads what is there. Thread: game thread. */
	void Open();

	/** Waits until something is posted, or the time is over. Thread: game thread. */
	void WaitForPost(uint32 Milliseconds);

private:
	TQueue<TUniqueFunction<void()>, EQueueMode::Mpsc> Letters;
	FCorvanePooledWait Posted;
};
