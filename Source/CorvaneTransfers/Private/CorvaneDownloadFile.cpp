#include "CorvaneDownloadFile.h"

#include "Attempts/Address.h"
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

UCorvaneDownloadFile* UCorvaneDownloadFile::Resume(
	const FString& InAddress, const FString& InFilePath, const FCorvaneDownloadOptions& InOptions)
{
	const FString FileID = CorvaneDrive::FindID(UCorvaneBPLibrary::googleDriveBase(), InAddress);
	return FileID.IsEmpty() ? Start(InAddress, InFilePath, InOptions, FTell()) : StartDriveFile(FileID, InFilePath, InOptions, FTell());
}

UCorvaneTransfer::FQueueWish UCorvaneDownloadFile::GetQueueWish() const
{
	return {Wishes.Queue, Wishes.Priority, CorvaneAddress::OriginWithoutUsualPort(Address)};
}

TSharedPtr<FCorvaneTransferRun> UCorvaneDownloadFile::MakeRun(FTell InOnEnd, TFunction<void()> InOnMove)
{
	if (!Route.IsValid())
	{
		return nullptr;
	}
	const TSharedRef<FCorvaneRoute> Way = Route.ToSharedRef();
	Route.Reset(); // or what it holds would outlive the run
	return MakeShared<FCorvaneDownloadRun>(Address, Path, Wishes, MoveTemp(InOnEnd), MoveTemp(InOnMove), Way);
}
