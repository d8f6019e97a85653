#include "Completion/GameThreadDelivery.h"

#include "Async/Async.h"
#include "UAsyncNodeCorv.h"

namespace CorvaneDelivery
{
	static void route(UCorvaneBPLibrary* Library, UAsyncNodeCorv* Node, const FHttpRequestPtr& Request, const FCorvCompletion& Result)
	{
		// A node that gave up its ID meanwhile, or lost it to another, is not the receiver any more.
		if (Node && Library->getUAsyncNodeHttpRequest(Result.requestID) == Node)
		{
			Library->releaseRunningRequest(Result.requestID, Request);
			Node->httpRequestComplete(
				Result.dataString, Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
			return;
		}
		Library->onhttpRequestCompleteDelegate.Broadcast(
			Result.dataString, Result.dataArray, Result.header, Result.statusCode, Result.byteData, Result.requestID);
	}
} // namespace CorvaneDelivery

void CorvaneDelivery::completion(UCorvaneBPLibrary* InLibrary, FHttpRequestPtr Request, FCorvCompletion Result)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Node = InLibrary->findNode(Result.requestID), Request,
			Result = MoveTemp(Result)]
		{
			if (UCorvaneBPLibrary* Alive = Library.Get())
			{
				route(Alive, Node.Get(), Request, Result);
			}
		});
}

void CorvaneDelivery::downloadProgress(
	UCorvaneBPLibrary* InLibrary, float Size, float MegaBytesReceived, float PercentDownload, float MegaBit, const FString& RequestID)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Size, MegaBytesReceived, PercentDownload, MegaBit, RequestID]
		{
			if (const UCorvaneBPLibrary* Alive = Library.Get())
			{
				Alive->onhttpFileDownloadDelegate.Broadcast(Size, MegaBytesReceived, PercentDownload, MegaBit, RequestID);
			}
		});
}

void CorvaneDelivery::uploadProgress(
	UCorvaneBPLibrary* InLibrary, float Size, int32 BytesSent, float PercentUpload, const FString& RequestID)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Size, BytesSent, PercentUpload, RequestID]
		{
			if (const UCorvaneBPLibrary* Alive = Library.Get())
			{
				Alive->onhttpFileUploadDelegate.Broadcast(Size, BytesSent, PercentUpload, RequestID);
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

void CorvaneDelivery::cancel(FHttpRequestPtr Request)
{
	AsyncTask(ENamedThreads::GameThread, [Request] { Request->CancelRequest(); });
}
