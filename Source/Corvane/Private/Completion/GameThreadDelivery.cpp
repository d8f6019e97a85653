#include "Completion/GameThreadDelivery.h"

#include "Async/Async.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDelivery
{
	/**
	 * @param Candidate  the node that waited when the request ended.
	 * @return the node that takes the result, now that nothing keeps the request's body in memory; null = the event tells.
	 */
	static UAsyncNodeCorv* receiver(
		UCorvaneBPLibrary& Library, UAsyncNodeCorv* Candidate, const FHttpRequestPtr& Request, const FString& RequestID)
	{
		const UAsyncNodeCorv* Registered = Library.getUAsyncNodeHttpRequest(RequestID);
		if (!Registered)
		{
			Library.unregisterUAsyncNodeHttpRequest(RequestID); // what a node leaves that was collected while it waited
		}
		if (!Candidate || Candidate != Registered) // it gave up its ID meanwhile, or lost it to another
		{
			return nullptr;
		}
		Library.releaseRunningRequest(RequestID, Request);
		return Candidate;
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

	/** The node is the one that waits now: a later one of the same ID has not asked for this result. */
	template <class ResultType>
	static void post(UCorvaneBPLibrary* InLibrary, FHttpRequestPtr Request, ResultType Result)
	{
		AsyncTask(ENamedThreads::GameThread,
			[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Node = InLibrary->findNode(Result.requestID), Request,
				Result = MoveTemp(Result)]
			{
				if (UCorvaneBPLibrary* Alive = Library.Get())
				{
					route(*Alive, Node.Get(), Request, Result);
				}
			});
	}
} // namespace CorvaneDelivery

void CorvaneDelivery::completion(UCorvaneBPLibrary* InLibrary, FHttpRequestPtr Request, FCorvCompletion Result)
{
	post(InLibrary, MoveTemp(Request), MoveTemp(Result));
}

void CorvaneDelivery::fileInfo(UCorvaneBPLibrary* InLibrary, FHttpRequestPtr Request, FCorvFileInfoResult Result)
{
	post(InLibrary, MoveTemp(Request), MoveTemp(Result));
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
