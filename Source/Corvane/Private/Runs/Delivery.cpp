#include "Runs/Delivery.h"

#include "Async/Async.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDelivery
{
	/** Less than this is freed faster than handed to another thread. */
	constexpr int64 largeResult = 512 << 10;

	/** @return the node that takes the result; null = the event tells. */
	static UAsyncNodeCorv* receiver(UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, const FString& RequestID)
	{
		Library.forgetDeadNode(RequestID); // it was collected while it waited
		return Node && Node->waitState != ECorvNodeWait::NotWaiting ? Node : nullptr; // it may have given up its ID meanwhile
	}

	/** The text is moved: a copy of one of some mebibytes takes a good part of a frame. */
	static void complete(UAsyncNodeCorv& Node, FCorvCompletion& Result)
	{
		if (UAsyncNodeHttpDownloadUpload* DownloadUpload = Cast<UAsyncNodeHttpDownloadUpload>(&Node))
		{
			DownloadUpload->httpRequestDownloadUploadComplete(
				MoveTemp(Result.dataString), Result.dataArray, Result.header, Result.statusCode, Result.requestID);
		}
		else
		{
			Node.httpRequestComplete(
				MoveTemp(Result.dataString), Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
		}
	}

	static void route(UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, FCorvCompletion& Result)
	{
		if (UAsyncNodeCorv* Receiver = receiver(Library, Node, Result.requestID))
		{
			complete(*Receiver, Result);
			return;
		}
		Library.onhttpRequestCompleteDelegate.Broadcast(
			MoveTemp(Result.dataString), Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
	}

	static void route(UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, const FCorvFileInfoResult& Result)
	{
		if (UAsyncNodeCorv* Receiver = receiver(Library, Node, Result.requestID))
		{
			if (UAsyncNodeHttpGoogleFileInfoRequest* FileInfo = Cast<UAsyncNodeHttpGoogleFileInfoRequest>(Receiver))
			{
				FileInfo->httpRequestCompleteGoogleFileInfo(
					Result.fileName, Result.fileSizeInBytes, Result.statusCode, Result.downloadID, Result.requestID);
			}
			return; // a node of another class has no use for it
		}
		Library.onhttpRequestCompleteGoogleInfoDelegate.Broadcast(
			Result.fileName, Result.fileSizeInBytes, Result.statusCode, Result.downloadID, Result.requestID);
	}

	static bool isLarge(const FCorvCompletion& Result)
	{
		constexpr int64 bytesInTextAndLines = 2 * sizeof(TCHAR);
		return Result.byteData.Num() + Result.dataString.Len() * bytesInTextAndLines >= largeResult;
	}
	static bool isLarge(const FCorvFileInfoResult&)
	{
		return false;
	}

	template <class ResultType>
	static void post(UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, ResultType Result)
	{
		const bool bIsLarge = isLarge(Result);
		AsyncTask(ENamedThreads::GameThread,
			[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Node, bIsLarge, Result = MoveTemp(Result)]() mutable
			{
				if (UCorvaneBPLibrary* Alive = Library.Get())
				{
					route(*Alive, Node.Get(), Result);
				}
				if (bIsLarge) // the system takes long to take so much memory back
				{
					AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Told = MoveTemp(Result)] {});
				}
			});
	}
} // namespace CorvaneDelivery

void CorvaneDelivery::completion(UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, FCorvCompletion Result)
{
	post(InLibrary, Node, MoveTemp(Result));
}

void CorvaneDelivery::fileInfo(UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, FCorvFileInfoResult Result)
{
	post(InLibrary, Node, MoveTemp(Result));
}

void CorvaneDelivery::progress(UCorvaneBPLibrary* InLibrary, TSharedPtr<FCorvProgressMail> Mail, FCorvProgressMail::FBroadcast Broadcast)
{
	if (!Mail->put(MoveTemp(Broadcast)))
	{
		return;
	}
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Mail]
		{
			const FCorvProgressMail::FBroadcast Latest = Mail->take();
			if (const UCorvaneBPLibrary* Alive = Library.Get())
			{
				Latest(*Alive);
			}
		});
}

void CorvaneDelivery::serverSendEvent(UCorvaneBPLibrary* InLibrary, FString Response, const FString& RequestID)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Response = MoveTemp(Response), RequestID]
		{
			if (const UCorvaneBPLibrary* Alive = Library.Get())
			{
				Alive->onhttpServerSendEventDelegate.Broadcast(Response, RequestID);
			}
		});
}
