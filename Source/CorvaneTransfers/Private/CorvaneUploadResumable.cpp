#include "CorvaneUploadResumable.h"

#include "Tus/TusRun.h"
#include "UObject/UObjectGlobals.h"

UCorvaneUploadResumable* UCorvaneUploadResumable::UploadResumable(
	const FString& InURL, const FString& InFilePath, const FCorvaneResumableOptions& InOptions)
{
	UCorvaneUploadResumable* Node = NewObject<UCorvaneUploadResumable>();
	Node->Address = InURL;
	Node->Path = InFilePath;
	Node->Wishes = InOptions;
	return Node;
}

UCorvaneUploadResumable* UCorvaneUploadResumable::Start(
	const FString& InURL, const FString& InFilePath, const FCorvaneResumableOptions& InOptions, FTell InOnEnd, FTell InOnMove)
{
	UCorvaneUploadResumable* Node = UploadResumable(InURL, InFilePath, InOptions);
	Node->NativeEnd = MoveTemp(InOnEnd);
	Node->NativeMove = MoveTemp(InOnMove);
	Node->Activate();
	return Node;
}

void UCorvaneUploadResumable::Activate()
{
	if (Run.IsValid())
	{
		return; // it was started once
	}
	AddToRoot(); // until its outcome: a graph that is gone does not end an upload
	const auto Move = [this](const FCorvaneTransferReport& Report)
	{
		OnProgress.Broadcast(Report);
		if (NativeMove)
		{
			NativeMove(Report);
		}
	};
	Run = MakeShared<FCorvaneTusRun>(
		Address, Path, Wishes, [this](const FCorvaneTransferReport& Report) { End(Report); }, Move);
	Run->Start();
}

void UCorvaneUploadResumable::End(const FCorvaneTransferReport& Report)
{
	(Report.Outcome == ECorvaneTransferOutcome::Succeeded ? OnSuccess : OnFail).Broadcast(Report);
	if (NativeEnd)
	{
		NativeEnd(Report);
	}
	RemoveFromRoot();
	SetReadyToDestroy();
}

void UCorvaneUploadResumable::Pause()
{
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneUploadResumable::Continue()
{
	if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneUploadResumable::Cancel()
{
	if (Run.IsValid())
	{
		Run->Cancel();
	}
}

FCorvaneTransferReport UCorvaneUploadResumable::GetReport() const
{
	return Run.IsValid() ? Run->GetReport() : FCorvaneTransferReport();
}

bool UCorvaneUploadResumable::IsPaused() const
{
	return Run.IsValid() && Run->IsPaused();
}
