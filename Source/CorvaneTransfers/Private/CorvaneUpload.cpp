#include "CorvaneUpload.h"

#include "Attempts/Address.h"
#include "Upload/UploadContent.h"
#include "Upload/UploadRun.h"

void UCorvaneUpload::Prepare(const TSharedRef<FCorvaneUploadContent>& InContent, const FCorvaneUploadOptions& InOptions)
{
	Content = InContent;
	Address = InContent->URL;
	Wishes = InOptions;
}

void UCorvaneUpload::Begin(FTell&& OnEnd, FTell&& OnMove)
{
	NativeEnd = MoveTemp(OnEnd);
	NativeMove = MoveTemp(OnMove);
	Activate();
}

UCorvaneTransfer::FQueueWish UCorvaneUpload::GetQueueWish() const
{
	return {Wishes.Queue, Wishes.Priority, CorvaneAddress::OriginWithoutUsualPort(Address)};
}

TSharedPtr<FCorvaneTransferRun> UCorvaneUpload::MakeRun(FTell OnEnd, TFunction<void()> OnMove)
{
	if (!Content.IsValid())
	{
		return nullptr;
	}
	const TSharedPtr<FCorvaneUploadContent> Sent = MoveTemp(Content); // or what it holds would outlive the run
	return MakeShared<FCorvaneUploadRun>(*Sent, Wishes, MoveTemp(OnEnd), MoveTemp(OnMove));
}
