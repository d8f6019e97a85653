#include "CorvaneUpload.h"

#include "Upload/UploadContent.h"
#include "Upload/UploadRun.h"

void UCorvaneUpload::Prepare(const TSharedRef<FCorvaneUploadContent>& InContent, const FCorvaneUploadOptions& InOptions)
{
	Content = InContent;
	Wishes = InOptions;
}

void UCorvaneUpload::Begin(FTell&& OnEnd, FTell&& OnMove)
{
	NativeEnd = MoveTemp(OnEnd);
	NativeMove = MoveTemp(OnMove);
	Activate();
}

void UCorvaneUpload::Activate()
{
	if (Run.IsValid() || !Content.IsValid())
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
	Run = MakeShared<FCorvaneUploadRun>(
		*Content, Wishes, [this](const FCorvaneTransferReport& Report) { End(Report); }, Move);
	Run->Start();
}

void UCorvaneUpload::End(const FCorvaneTransferReport& Report)
{
	(Report.Outcome == ECorvaneTransferOutcome::Succeeded ? OnSuccess : OnFail).Broadcast(Report);
	if (NativeEnd)
	{
		NativeEnd(Report);
	}
	RemoveFromRoot();
	SetReadyToDestroy();
}

void UCorvaneUpload::Pause()
{
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneUpload::Continue()
{
	if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneUpload::Cancel()
{
	if (Run.IsValid())
	{
		Run->Cancel();
	}
}

FCorvaneTransferReport UCorvaneUpload::GetReport() const
{
	return Run.IsValid() ? Run->GetReport() : FCorvaneTransferReport();
}

bool UCorvaneUpload::IsPaused() const
{
	return Run.IsValid() && Run->IsPaused();
}
