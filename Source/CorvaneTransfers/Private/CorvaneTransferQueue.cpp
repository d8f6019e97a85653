#include "CorvaneTransferQueue.h"

#include "FolderResume.h"
#include "Queue/QueueRun.h"
#include "Queue/Queues.h"
#include "UObject/UObjectGlobals.h"

UCorvaneTransferQueue* UCorvaneTransferQueue::GetTransferQueue(const FString& InName)
{
	const TSharedRef<FCorvaneQueueRun> Found = CorvaneQueues::Get(InName);
	if (UCorvaneTransferQueue* Known = Found->GetOwner())
	{
		return Known;
	}
	UCorvaneTransferQueue* Made = NewObject<UCorvaneTransferQueue>();
	Made->Run = Found;
	Made->OwnName = InName;
	FCorvaneQueueRun::FEars Ears;
	Ears.Progress = [Made](const FCorvaneQueueReport& Report) { Made->OnProgress.Broadcast(Report); };
	Ears.End = [Made](UCorvaneTransfer& Transfer, const FCorvaneTransferReport& Report)
	{ Made->OnTransferEnd.Broadcast(&Transfer, Report); };
	Ears.Idle = [Made](const FCorvaneQueueReport& Report) { Made->OnIdle.Broadcast(Report); };
	Found->SetOwner(*Made, MoveTemp(Ears));
	return Made;
}

void UCorvaneTransferQueue::SetLimits(int32 InMostAtOnce, int32 InMostPerHost, int64 InBytesPerSecond)
{
	if (Run.IsValid())
	{
		Run->SetLimits(InMostAtOnce, InMostPerHost, InBytesPerSecond);
	}
}

void UCorvaneTransferQueue::Pause()
{
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneTransferQueue::Continue()
{
	if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneTransferQueue::CancelAll()
{
	if (Run.IsValid())
	{
		Run->CancelAll();
	}
}

void UCorvaneTransferQueue::ResumeFolder(const FString& InFolder, const FCorvaneDownloadOptions& InOptions, const FString& InOnlyOrigin)
{
	if (Run.IsValid())
	{
		FCorvaneDownloadOptions InQueue = InOptions;
		InQueue.Queue = OwnName;
		CorvaneFolderResume::Downloads(Run.ToSharedRef(), InFolder, InQueue, InOnlyOrigin);
	}
}

void UCorvaneTransferQueue::ResumeUploads(const FCorvaneResumableOptions& InOptions, const FString& InOnlyOrigin)
{
	if (Run.IsValid())
	{
		FCorvaneResumableOptions InQueue = InOptions;
		InQueue.Queue = OwnName;
		CorvaneFolderResume::Uploads(Run.ToSharedRef(), InQueue, InOnlyOrigin);
	}
}

FCorvaneQueueReport UCorvaneTransferQueue::GetReport() const
{
	return Run.IsValid() ? Run->GetReport() : FCorvaneQueueReport();
}

bool UCorvaneTransferQueue::IsPaused() const
{
	return Run.IsValid() && Run->IsPaused();
}
