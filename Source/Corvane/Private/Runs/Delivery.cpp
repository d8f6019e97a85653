#include "Runs/Delivery.h"

#include "Async/Async.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDelivery
{
	/** @return the node that takes the result, now that nothing keeps the request's body in memory; null = the event tells. */
	static UAsyncNodeCorv* receiver(
		UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, const FHttpRequestPtr& Request, const FString& RequestID)
	{
		Library.forgetDeadNode(RequestID); // it was collected while it waited
		if (!Node || Node->waitState == ECorvNodeWait::NotWaiting) // it gave up its ID meanwhile
		{
			return nullptr;
		}
		Library.releaseRunningRequest(RequestID, Request);
		return Node;
	}

	static void complete(UAsyncNodeCorv& Node, const FCorvCompletion& Result)
	{
		if (UAsyncNodeHttpDownloadUpload* DownloadUpload = Cast<UAsyncNodeHttpDownloadUpload>(&Node))
		{
			DownloadUpload->httpRequestDownloadUploadComplete(
				Result.dataString, Result.dataArray, Result.header, Result.statusCode, Result.requestID);
		}
		else
		{
			Node.httpRequestComplete(
				Result.dataString, Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
		}
	}

	static void route(UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, const FHttpRequestPtr& Request, const FCorvCompletion& Result)
	{
		if (UAsyncNodeCorv* Receiver = receiver(Library, Node, Request, Result.requestID))
		{
			complete(*Receiver, Result);
			return;
		}
		Library.onhttpRequestCompleteDelegate.Broadcast(
			Result.dataString, Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
	}

	static void route(UCorvaneBPLibrary& Library, UAsyncNodeCorv* Node, const FHttpRequestPtr& Request, const FCorvFileInfoResult& Result)
	{
		if (UAsyncNodeCorv* Receiver = receiver(Library, Node, Request, Result.requestID))
		{
			if (UAsyncNodeHttpGoogleFileInfoRequest* FileInfo = Cast<UAsyncNodeHttpGoogleFileInfoRequest>(Receiver))
			{
				FileInfo->httpRequestCompleteGoogleFileInfo(
					Result.fileName, Result.fileSizeInBytes, Result.statusCode, Result.downloadID, Result.requestID);
			}
			return; // a node of another class has no use for it
		}
		Library.releaseRunningRequest(Result.requestID, Request); // no listener of the library's own hears this event
		Library.onhttpRequestCompleteGoogleInfoDelegate.Broadcast(
			Result.fileName, Result.fileSizeInBytes, Result.statusCode, Result.downloadID, Result.requestID);
	}

	template <class ResultType>
	static void post(UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, FHttpRequestPtr Request, ResultType Result)
	{
		AsyncTask(ENamedThreads::GameThread,
			[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Node, Request, Result = MoveTemp(Result)]
			{
				if (UCorvaneBPLibrary* Alive = Library.Get())
				{
					route(*Alive, Node.Get(), Request, Result);
				}
			});
	}
} // namespace CorvaneDelivery

void CorvaneDelivery::completion(
	UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, FHttpRequestPtr Request, FCorvCompletion Result)
{
	post(InLibrary, Node, MoveTemp(Request), MoveTemp(Result));
}

void CorvaneDelivery::fileInfo(
	UCorvaneBPLibrary* InLibrary, TWeakObjectPtr<UAsyncNodeCorv> Node, FHttpRequestPtr Request, FCorvFileInfoResult Result)
{
	post(InLibrary, Node, MoveTemp(Request), MoveTemp(Result));
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
