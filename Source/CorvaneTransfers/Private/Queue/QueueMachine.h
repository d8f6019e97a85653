#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

/**
 * Who may start when, as a machine of values: it knows transfers by their tickets alone, which rise with their arrival. Those of
 * higher priority come first, then hosts take turns, then those that came first. Thread: one at a time.
 */
class FCorvaneQueueMachine
{
public:
	/** What runs goes on, also above a new limit. Less than 1 counts as 1. */
	void SetLimits(int32 InMostAtOnce, int32 InMostPerHost);

	/** It waits from now on. @param Ticket  higher than any before. */
	void Add(int64 Ticket, const FString& Host, int32 Priority);
	/** It neither waits nor runs until Wake; one that has a place keeps it until OnStopped. */
	void Park(int64 Ticket);
	/** Nothing of it moves any more: if it is parked, its place is free. Harmless otherwise. */
	void OnStopped(int64 Ticket);
	/** It waits again, as one that came when it did, or goes on in the place that it still has. */
	void Wake(int64 Ticket);
	/** It is over, or needs no place any more. Harmless when it is not known. */
	void Remove(int64 Ticket);

	/** @return false when none may start now; else the one that does has a place from now on. */
	bool StartNext(int64& OutTicket);

	/** Nothing starts until Continue. */
	void Pause() { bPaused = true; }
	void Continue() { bPaused = false; }
	bool IsPaused() const { return bPaused; }

	bool IsParked(int64 Ticket) const { return Is(Ticket, EState::Parked); }
	/** Whether it is to be parked, and has its place still. */
	bool IsStopping(int64 Ticket) const { return Is(Ticket, EState::Stopping); }
	bool IsRunning(int64 Ticket) const { return Is(Ticket, EState::Running); }
	int32 NumWaiting() const { return Entries.Num() - Running - Parked; }
	int32 NumRunning() const { return Running; }
	int32 NumParked() const { return Parked; }

private:
	enum class EState : uint8
	{
		Waiting,
		Running,
		Stopping,
		Parked
	};
	/** One that waits. The order of a list of them is that in which they start. */
	struct FRank
	{
		int32 Priority = 0;
		int64 Ticket = 0;

		bool IsBefore(const FRank& Other) const
		{
			return Priority > Other.Priority || (Priority == Other.Priority && Ticket < Other.Ticket);
		}
	};
	struct FHost
	{
		explicit FHost(const FString& InName)
			: Name(InName)
		{
		}

		FString Name;
		int32 Known = 0; // how many are not over
		TArray<FRank> Line;
		int32 First = 0; // of Line: those before it have started
		int32 Running = 0;
		int64 Turn = 0; // when it last had one

		bool HasWaiting() const { return First < Line.Num(); }
		bool IsIdle() const { return !HasWaiting() && Running == 0; }
		const FRank& Head() const { return Line[First]; }
	};
	struct FEntry
	{
		TSharedPtr<FHost> Host;
		int32 Priority = 0;
		EState State = EState::Waiting;

		bool HasPlace() const { return State == EState::Running || State == EState::Stopping; }
	};

	bool Is(int64 Ticket, EState State) const;
	void Enqueue(int64 Ticket, const FEntry& Entry);
	void Dequeue(int64 Ticket, const FEntry& Entry);
	void Leave(int64 Ticket, const FEntry& Entry);
	void PutAside(int64 Ticket, FEntry& Entry);
	TSharedPtr<FHost> NeedHost(const FString& Name);
	static int32 PlaceOf(const FHost& Host, const FRank& Rank);
	FHost* ChooseHost();

	int32 MostAtOnce = 1;
	int32 MostPerHost = 1;
	bool bPaused = false;
	TMap<int64, FEntry> Entries;
	TMap<FString, TSharedPtr<FHost>> Hosts; // those with one that is not over
	int32 Running = 0;
	int32 Parked = 0;
	int64 Turns = 0;
};
