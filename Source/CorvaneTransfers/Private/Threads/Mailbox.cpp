#include "Threads/Mailbox.h"

#include "Async/Async.h"

void FCorvaneMailbox::Post(TUniqueFunction<void()> Letter)
{
	Letters.Enqueue(MoveTemp(Letter));
	Posted->Trigger();
	AsyncTask(ENamedThreads::GameThread, [Self = AsShared()] { Self->Open(); });
}

void FCorvaneMailbox::Open()
{
	TUniqueFunction<void()> Letter;
	while (Letters.Dequeue(Letter))
	{
		Letter();
	}
}

void FCorvaneMailbox::WaitForPost(uint32 Milliseconds)
{
	if (Letters.IsEmpty())
	{
		Posted->Wait(Milliseconds);
	}
}
