#include "Threads/Strand.h"

#include "Async/Async.h"

void FCorvaneStrand::Add(TUniqueFunction<void()> Step)
{
	Steps.Enqueue(MoveTemp(Step));
	if (StepsLeft++ == 0)
	{
		AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Self = AsShared()] { Self->WorkOff(); });
	}
}

void FCorvaneStrand::WorkOff()
{
	do
	{
		TUniqueFunction<void()> Step;
		Steps.Dequeue(Step);
		Step();
	} while (--StepsLeft > 0);
}
