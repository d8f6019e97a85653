#include "CorvaneDownloadFile.h"

#include "CorvaneBPLibrary.h"
#include "Download/DownloadRun.h"
#include "Drive/DrivePage.h"
#include "Drive/DriveRoute.h"
#include "UObject/UObjectGlobals.h"

UCorvaneDownloadFile* UCorvaneDownloadFile::DownloadFile(
	const FString& InURL, const FString& InFilePath, const FCorvaneDownloadOptions& InOptions)
{
	UCorvaneDownloadFile* Node = NewObject<UCorvaneDownloadFile>();
	Node->Address = InURL;
	Node->Path = InFilePath;
	Node->Wishes = InOptions;
	Node->Route = MakeShared<FCorvaneStraightRoute>();
	return Node;
}

UCorvaneDownloadFile* UCorvaneDownloadFile::Start(
	const FString& InURL, const FString& InFilePath, const FCorvaneDownloadOptions& InOptions, FTell InOnEnd, FTell InOnMove)
{
	return Begin(DownloadFile(InURL, InFilePath, InOptions), MoveTemp(InOnEnd), MoveTemp(InOnMove));
}

UCorvaneDownloadFile* UCorvaneDownloadFile::DownloadDriveFile(
	const FString& InFileID, const FString& InFilePath, const FCorvaneDownloadOptions& InOptions)
{
	UCorvaneDownloadFile* Node =
		DownloadFile(CorvaneDrive::MakeAddress(UCorvaneBPLibrary::googleDriveBase(), InFileID), InFilePath, InOptions);
	Node->Route = MakeShared<FCorvaneDriveRoute>(InFileID);
	return Node;
}

UCorvaneDownloadFile* UCorvaneDownloadFile::StartDriveFile(
	const FString& InFileID, const FString& InFilePath, const FCorvaneDownloadOptions& InOptions, FTell InOnEnd, FTell InOnMove)
{
	return Begin(DownloadDriveFile(InFileID, InFilePath, InOptions), MoveTemp(InOnEnd), MoveTemp(InOnMove));
}

UCorvaneDownloadFile* UCorvaneDownloadFile::Begin(UCorvaneDownloadFile* Node, FTell&& InOnEnd, FTell&& InOnMove)
{
	Node->NativeEnd = MoveTemp(InOnEnd);
	Node->NativeMove = MoveTemp(InOnMove);
	Node->Activate();
	return Node;
}

void UCorvaneDownloadFile::Activate()
{
	if (Run.IsValid())
	{
		return; // it was started once
	}
	AddToRoot(); // until its outcome: a graph that is gone does not end a download
	Run = MakeShared<FCorvaneDownloadRun>(
		Address, Path, Wishes, [this](const FCorvaneTransferReport& Report) { End(Report); }, [this] { TellProgress(); },
		Route.ToSharedRef());
	Run->Start();
}

void UCorvaneDownloadFile::TellProgress()
{
	if (!OnProgress.IsBound() && !NativeMove)
	{
		return; // a report for nobody costs as much as one for somebody
	}
	const FCorvaneTransferReport Report = Run->GetReport();
	OnProgress.Broadcast(Report);
	if (NativeMove)
	{
		NativeMove(Report);
	}
}

void UCorvaneDownloadFile::End(const FCorvaneTransferReport& Report)
{
	(Report.Outcome == ECorvaneTransferOutcome::Succeeded ? OnSuccess : OnFail).Broadcast(Report);
	if (NativeEnd)
	{
		NativeEnd(Report);
	}
	RemoveFromRoot();
	SetReadyToDestroy();
}

void UCorvaneDownloadFile::Pause()
{
	if (Run.IsValid())
	{
		Run->Pause();
	}
}

void UCorvaneDownloadFile::Continue()
{
	if (Run.IsValid())
	{
		Run->Continue();
	}
}

void UCorvaneDownloadFile::Cancel()
{
	if (Run.IsValid())
	{
		Run->Cancel();
	}
}

FCorvaneTransferReport UCorvaneDownloadFile::GetReport() const
{
	return Run.IsValid() ? Run->GetReport() : FCorvaneTransferReport();
}

bool UCorvaneDownloadFile::IsPaused() const
{
	return Run.IsValid() && Run->IsPaused();
}
