#include "CorvaneFollowEvents.h"

#include "Events/FollowRun.h"
#include "UObject/UObjectGlobals.h"

UCorvaneFollowEvents* UCorvaneFollowEvents::FollowEvents(const FString& InURL, const FCorvaneFollowOptions& InOptions)
{
	UCorvaneFollowEvents* Node = NewObject<UCorvaneFollowEvents>();
	Node->Address = InURL;
	Node->Wishes = InOptions;
	return Node;
}

UCorvaneFollowEvents* UCorvaneFollowEvents::Start(const FString& InURL, const FCorvaneFollowOptions& InOptions, FHandlers InHandlers)
{
	UCorvaneFollowEvents* Node = FollowEvents(InURL, InOptions);
	Node->Handlers = MoveTemp(InHandlers);
	Node->Activate();
	return Node;
}

void UCorvaneFollowEvents::Activate()
{
	if (Run.IsValid())
	{
		return; // it was started once
	}
	AddToRoot(); // until its outcome: a graph that is gone does not end it
	FCorvaneFollowRun::FEars Ears;
	Ears.Prepare = [this](const FCorvaneTransferReport& Report) { BeforeAttempt(Report); };
	Ears.Open = [this](const FCorvaneTransferReport& Report) { Open(Report); };
	Ears.Event = [this](const FString& ID, const FString& Type, const FString& Data) { Hear(ID, Type, Data); };
	Ears.Close = [this](const FCorvaneTransferReport& Report) { Close(Report); };
	Run = MakeShared<FCorvaneFollowRun>(Address, Wishes, MoveTemp(Ears));
	Run->Start();
}

void UCorvaneFollowEvents::BeforeAttempt(const FCorvaneTransferReport& Report)
{
	OnBeforeAttempt.Broadcast(GetLastEventID(), FString(), FString(), Report);
	if (Handlers.OnBeforeAttempt)
	{
		Handlers.OnBeforeAttempt(*this);
	}
}

void UCorvaneFollowEvents::Open(const FCorvaneTransferReport& Report)
{
	OnOpen.Broadcast(GetLastEventID(), FString(), FString(), Report);
	if (Handlers.OnOpen)
	{
		Handlers.OnOpen(Report);
	}
}

void UCorvaneFollowEvents::Hear(const FString& ID, const FString& Type, const FString& Data)
{
	if (OnEvent.IsBound()) // else nobody needs a report for each
	{
		OnEvent.Broadcast(ID, Type, Data, GetReport());
	}
	if (Handlers.OnEvent)
	{
		Handlers.OnEvent(ID, Type, Data);
	}
}

void UCorvaneFollowEvents::Close(const FCorvaneTransferReport& Report)
{
	OnClose.Broadcast(GetLastEventID(), FString(), FString(), Report);
	if (Handlers.OnClose)
	{
		Handlers.OnClose(Report);
	}
	RemoveFromRoot();
	SetReadyToDestroy();
}

void UCorvaneFollowEvents::Pause()
{
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneFollowEvents::Continue()
{
	if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneFollowEvents::Cancel()
{
	if (Run.IsValid())
	{
		Run->Cancel();
	}
}

void UCorvaneFollowEvents::SetHeader(const FString& Name, const FString& Value)
{
	if (Run.IsValid())
	{
		Run->SetHeader(Name, Value);
	}
	else if (Value.IsEmpty())
	{
		Wishes.Headers.Remove(Name);
	}
	else
	{
		Wishes.Headers.Add(Name, Value);
	}
}

FString UCorvaneFollowEvents::GetLastEventID() const
{
	return Run.IsValid() ? Run->GetLastEventID() : Wishes.LastEventID;
}

FCorvaneTransferReport UCorvaneFollowEvents::GetReport() const
{
	return Run.IsValid() ? Run->GetReport() : FCorvaneTransferReport();
}

bool UCorvaneFollowEvents::IsPaused() const
{
	return Run.IsValid() && Run->IsPaused();
}
