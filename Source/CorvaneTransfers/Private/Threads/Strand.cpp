#include "Threads/Strand.h"

#include "Async/Async.h"
#include "Misc/ScopeLock.h"

void FCorvaneStrand::Add(TUniqueFunction<void()> Step)
{
	{
		const FScopeLock Lock(&Guard);
		Steps.Enqueue(MoveTemp(Step));
		if (bWorking)
		{
			return;
		}
		bWorking = true;
	}
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Self = AsShared()] { Self->WorkOff(); });
}

bool FCorvaneStrand::Take(TUniqueFunction<void()>& Step)
{
	const FScopeLock Lock(&Guard);
	bWorking = Steps.Dequeue(Step);
	return bWorking;
}

void FCorvaneStrand::WorkOff()
{
	for (;;)
	{
		TUniqueFunction<void()> Step; // goes, with what it holds, before the next one comes
		if (!Take(Step))
		{
			return;
		}
		Step();
	}
}
