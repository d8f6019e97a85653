#include "UAsyncNodeHttpGoogleFileInfoRequest.h"

#include "Nodes/NodeSteps.h"
#include "Rules/StatusCodes.h"
#include "UObject/UObjectGlobals.h"

UAsyncNodeHttpGoogleFileInfoRequest* UAsyncNodeHttpGoogleFileInfoRequest::AsyncExecuteHTTP_GoogleFileInfo_REQUEST(FString InDownloadID)
{
	UAsyncNodeHttpGoogleFileInfoRequest* Node = NewObject<UAsyncNodeHttpGoogleFileInfoRequest>();
	Node->requestID = CorvaneNode::takeID(*Node, FString());
	const int32 StatusCode =
		UCorvaneBPLibrary::CreateHttpRequestGoogleDriveFileInfo({}, InDownloadID, Node->requestID, Node->httpRequests, Node->requestID);
	if (StatusCode == CorvaneStatus::refused)
	{
		Node->httpRequestCompleteGoogleFileInfo(FString(), 0, StatusCode, InDownloadID, Node->requestID);
	}
	return Node;
}

void UAsyncNodeHttpGoogleFileInfoRequest::Activate()
{
	UCorvaneBPLibrary::startAll(httpRequests); // none when the builder refused
}

void UAsyncNodeHttpGoogleFileInfoRequest::httpRequestCompleteGoogleFileInfo(
	FString InFileName, int64 InFileSizeInBytes, int32 InStatusCode, FString InDownloadID, FString InRequestID)
{
	const auto& Outcome = InStatusCode < CorvaneStatus::firstError ? OnSuccess : OnFail; // 0 counts as success here
	Outcome.Broadcast(InFileName, InFileSizeInBytes, InStatusCode, InDownloadID, InRequestID);
	CorvaneNode::giveUpID(*this, requestID);
	CorvaneNode::release(*this);
}
