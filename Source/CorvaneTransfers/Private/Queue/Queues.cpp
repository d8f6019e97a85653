#include "Queue/Queues.h"

namespace CorvaneQueues
{
	static TMap<FString, TSharedPtr<FCorvaneQueueRun>>& List()
	{
		static TMap<FString, TSharedPtr<FCorvaneQueueRun>> Queues;
		return Queues;
	}
} // namespace CorvaneQueues

TSharedRef<FCorvaneQueueRun> CorvaneQueues::Get(const FString& Name)
{
	if (const TSharedPtr<FCorvaneQueueRun>* Found = List().Find(Name))
	{
		return Found->ToSharedRef();
	}
	return List().Add(Name, MakeShared<FCorvaneQueueRun>()).ToSharedRef();
}

bool CorvaneQueues::HavePendingWork()
{
	for (const TPair<FString, TSharedPtr<FCorvaneQueueRun>>& Queue : List())
	{
		if (Queue.Value->HasPendingWork())
		{
			return true;
		}
	}
	return false;
}

void CorvaneQueues::LetGoOfAll()
{
	for (const TPair<FString, TSharedPtr<FCorvaneQueueRun>>& Queue : List())
	{
		Queue.Value->LetGoOfAll();
	}
}

void CorvaneQueues::Clear()
{
	List().Empty();
}
