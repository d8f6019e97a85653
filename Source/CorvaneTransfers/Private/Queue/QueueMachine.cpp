#include "Queue/QueueMachine.h"

void FCorvaneQueueMachine::SetLimits(int32 InMostAtOnce, int32 InMostPerHost)
{
	MostAtOnce = FMath::Max<int32>(InMostAtOnce, 1);
	MostPerHost = FMath::Max<int32>(InMostPerHost, 1);
}

void FCorvaneQueueMachine::Add(int64 Ticket, const FString& Host, int32 Priority)
{
	FEntry Entry;
	Entry.Host = NeedHost(Host);
	Entry.Priority = Priority;
	++Entry.Host->Known;
	Enqueue(Ticket, Entry);
	Entries.Add(Ticket, Entry);
}

TSharedPtr<FCorvaneQueueMachine::FHost> FCorvaneQueueMachine::NeedHost(const FString& Name)
{
	const TSharedPtr<FHost>* const Known = Hosts.Find(Name);
	return Known ? *Known : Hosts.Add(Name, MakeShared<FHost>(Name));
}

void FCorvaneQueueMachine::Park(int64 Ticket)
{
	FEntry* Entry = Entries.Find(Ticket);
	if (Entry && Entry->State == EState::Waiting)
	{
		PutAside(Ticket, *Entry);
	}
	else if (Entry && Entry->State == EState::Running)
	{
		Entry->State = EState::Stopping;
	}
}

void FCorvaneQueueMachine::OnStopped(int64 Ticket)
{
	FEntry* Entry = Entries.Find(Ticket);
	if (Entry && Entry->State == EState::Stopping)
	{
		PutAside(Ticket, *Entry);
	}
}

void FCorvaneQueueMachine::PutAside(int64 Ticket, FEntry& Entry)
{
	Leave(Ticket, Entry);
	Entry.State = EState::Parked;
	++Parked;
}

void FCorvaneQueueMachine::Wake(int64 Ticket)
{
	FEntry* Entry = Entries.Find(Ticket);
	if (Entry && Entry->State == EState::Parked)
	{
		--Parked;
		Entry->State = EState::Waiting;
		Enqueue(Ticket, *Entry);
	}
	else if (Entry && Entry->State == EState::Stopping)
	{
		Entry->State = EState::Running;
	}
}

void FCorvaneQueueMachine::Remove(int64 Ticket)
{
	if (const FEntry* Entry = Entries.Find(Ticket))
	{
		Leave(Ticket, *Entry);
		Parked -= Entry->State == EState::Parked ? 1 : 0;
		if (--Entry->Host->Known == 0)
		{
			Hosts.Remove(Entry->Host->Name);
		}
		Entries.Remove(Ticket);
	}
}

bool FCorvaneQueueMachine::Is(int64 Ticket, EState State) const
{
	const FEntry* Entry = Entries.Find(Ticket);
	return Entry && Entry->State == State;
}

bool FCorvaneQueueMachine::StartNext(int64& OutTicket)
{
	FHost* Host = bPaused || Running >= MostAtOnce ? nullptr : ChooseHost();
	if (!Host)
	{
		return false;
	}
	OutTicket = Host->Head().Ticket;
	++Host->First;
	++Host->Running;
	Host->Turn = ++Turns;
	Entries.Find(OutTicket)->State = EState::Running;
	++Running;
	return true;
}

/** @return the one with room whose first has the highest priority, and of several the one whose last turn is longest ago. */
FCorvaneQueueMachine::FHost* FCorvaneQueueMachine::ChooseHost()
{
	FHost* Chosen = nullptr;
	for (const TPair<FString, TSharedPtr<FHost>>& Pair : Hosts)
	{
		FHost& Host = *Pair.Value;
		if (!Host.HasWaiting() || Host.Running >= MostPerHost)
		{
			continue;
		}
		const int32 Priority = Host.Head().Priority;
		const int32 Best = Chosen ? Chosen->Head().Priority : Priority;
		if (!Chosen || Priority > Best || (Priority == Best && Host.Turn < Chosen->Turn))
		{
			Chosen = &Host;
		}
	}
	return Chosen;
}

/** @return where a rank stands among those that wait, or would stand. */
int32 FCorvaneQueueMachine::PlaceOf(const FHost& Host, const FRank& Rank)
{
	int32 Low = Host.First;
	int32 High = Host.Line.Num();
	while (Low < High)
	{
		const int32 Middle = Low + (High - Low) / 2;
		const bool bBefore = Host.Line[Middle].IsBefore(Rank);
		Low = bBefore ? Middle + 1 : Low;
		High = bBefore ? High : Middle;
	}
	return Low;
}

void FCorvaneQueueMachine::Enqueue(int64 Ticket, const FEntry& Entry)
{
	FHost& Host = *Entry.Host;
	if (Host.IsIdle())
	{
		Host.Turn = ++Turns; // a host that is new stands behind the others, or one that comes and goes would pass them
	}
	const FRank Rank{Entry.Priority, Ticket};
	Host.Line.Insert(Rank, PlaceOf(Host, Rank));
}

void FCorvaneQueueMachine::Dequeue(int64 Ticket, const FEntry& Entry)
{
	FHost& Host = *Entry.Host;
	Host.Line.RemoveAt(PlaceOf(Host, FRank{Entry.Priority, Ticket}));
}

/** Takes it out of the line, or frees its place. */
void FCorvaneQueueMachine::Leave(int64 Ticket, const FEntry& Entry)
{
	FHost& Host = *Entry.Host;
	if (Entry.State == EState::Waiting)
	{
		Dequeue(Ticket, Entry);
	}
	else if (Entry.HasPlace())
	{
		--Host.Running;
		--Running;
	}
	if (!Host.HasWaiting()) // else those that have started stay before the others
	{
		Host.Line.Reset();
		Host.First = 0;
	}
}
