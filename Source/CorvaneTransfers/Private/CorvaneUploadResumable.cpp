#include "CorvaneUploadResumable.h"

#include "Attempts/Address.h"
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

UCorvaneTransfer::FQueueWish UCorvaneUploadResumable::GetQueueWish() const
{
	return {Wishes.Queue, Wishes.Priority, CorvaneAddress::OriginWithoutUsualPort(Address)};
}

TSharedPtr<FCorvaneTransferRun> UCorvaneUploadResumable::MakeRun(FTell OnEnd, TFunction<void()> OnMove)
{
	return MakeShared<FCorvaneTusRun>(Address, Path, Wishes, MoveTemp(OnEnd), MoveTemp(OnMove));
}
