#include "UAsyncNodeHttpRequest.h"

#include "Nodes/NodeSteps.h"
#include "Rules/StatusCodes.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneRequestNode
{
	static UAsyncNodeHttpRequest* make(const FString& OptionalRequestID)
	{
		UAsyncNodeHttpRequest* Node = NewObject<UAsyncNodeHttpRequest>();
		Node->AddToRoot();
		Node->requestID = CorvaneNode::takeID(*Node, OptionalRequestID);
		return Node;
	}

	/** @param StatusCode  what the builder returned. */
	static UAsyncNodeHttpRequest* finish(UAsyncNodeHttpRequest* Node, int32 StatusCode)
	{
		if (StatusCode == CorvaneStatus::refused)
		{
			Node->httpRequestComplete(FString(), {}, {}, StatusCode, {}, Node->requestID);
		}
		return Node;
	}
} // namespace CorvaneRequestNode

UAsyncNodeHttpRequest* UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(
	FString InUrl, TMap<FString, FString> InHeader, FString InOptionalRequestID, bool bInBindServerSendEvent)
{
	UAsyncNodeHttpRequest* Node = CorvaneRequestNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestGET(
		{}, InUrl, InHeader, Node->requestID, bInBindServerSendEvent, Node->httpRequests, Node->requestID);
	return CorvaneRequestNode::finish(Node, StatusCode);
}

UAsyncNodeHttpRequest* UAsyncNodeHttpRequest::AsyncExecuteHTTP_POST_REQUEST(FString InUrl, TMap<FString, FString> InHeader,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID, bool bInBindServerSendEvent)
{
	UAsyncNodeHttpRequest* Node = CorvaneRequestNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestPOST(
		{}, InUrl, InHeader, InPOSTData, Node->requestID, bInBindServerSendEvent, Node->httpRequests, Node->requestID);
	return CorvaneRequestNode::finish(Node, StatusCode);
}

UAsyncNodeHttpRequest* UAsyncNodeHttpRequest::AsyncExecuteHTTP_Individual_REQUEST(FString InUrl, TMap<FString, FString> InHeader,
	FString InVerb, EHTTPCorvIndividualType InContentType, FString InContent, FString InOptionalRequestID, bool bInAddContentLengthHeader)
{
	UAsyncNodeHttpRequest* Node = CorvaneRequestNode::make(InOptionalRequestID);
	UCorvaneBPLibrary::CreateHttpRequestIndividual({}, InUrl, InHeader, InVerb, InContentType, InContent, Node->requestID,
		Node->httpRequests, Node->requestID, bInAddContentLengthHeader, false, false, false);
	return Node; // a refusal reaches it by itself, one task later
}

UAsyncNodeHttpRequest* UAsyncNodeHttpRequest::AsyncExecuteHTTP_GoogleDrive_REQUEST(
	FString InDownloadID, FString InOptionalRequestID, int64 InOptionalFileSizeInByte)
{
	UAsyncNodeHttpRequest* Node = CorvaneRequestNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestGoogleDrive(
		{}, InDownloadID, Node->requestID, InOptionalFileSizeInByte, Node->httpRequests, Node->requestID);
	return CorvaneRequestNode::finish(Node, StatusCode);
}

void UAsyncNodeHttpRequest::Activate()
{
	UCorvaneBPLibrary::startAll(httpRequests); // none when the builder refused
}

void UAsyncNodeHttpRequest::httpRequestComplete(FString InDataString, const TArray<FString>& InDataArray, const TArray<FString>& InHeader,
	int32 InStatusCode, const TArray<uint8>& InByteData, FString InRequestID)
{
	const auto& Outcome = CorvaneNode::isSuccess(InStatusCode) ? OnSuccess : OnFail;
	Outcome.Broadcast(MoveTemp(InDataString), InDataArray, InHeader, InStatusCode, InByteData, InRequestID);
	SetReadyToDestroy(); // or the graph that made it would hold it on
	ConditionalBeginDestroy();
}

void UAsyncNodeHttpRequest::BeginDestroy()
{
	CorvaneNode::giveUpID(*this, requestID);
	RemoveFromRoot();
	Super::BeginDestroy();
}
