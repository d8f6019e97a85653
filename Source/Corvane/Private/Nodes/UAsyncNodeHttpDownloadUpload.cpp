#include "UAsyncNodeHttpDownloadUpload.h"

#include "Nodes/NodeSteps.h"
#include "Rules/StatusCodes.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDownloadUploadNode
{
	static UAsyncNodeHttpDownloadUpload* make(const FString& OptionalRequestID)
	{
		UAsyncNodeHttpDownloadUpload* Node = NewObject<UAsyncNodeHttpDownloadUpload>();
		Node->requestID = CorvaneNode::takeID(*Node, OptionalRequestID);
		return Node;
	}

	/** @param StatusCode  what the builder returned. */
	static UAsyncNodeHttpDownloadUpload* finish(UAsyncNodeHttpDownloadUpload* Node, int32 StatusCode)
	{
		if (StatusCode == CorvaneStatus::refused)
		{
			Node->httpRequestDownloadUploadComplete(FString(), {}, {}, StatusCode, Node->requestID);
		}
		return Node;
	}
} // namespace CorvaneDownloadUploadNode

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Download_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileDownloadResumeType InActionIfFileExists, EHTTPCorvFileUpload InDirectoryType,
	FString InFilePathWithFileName, FString InOptionalRequestID)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestGETDownload({}, InUrl, InHeader, InActionIfFileExists, InDirectoryType,
		InFilePathWithFileName, Node->requestID, Node->httpRequests, Node->requestID);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Low_RAM_Download_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileDownloadResumeType InActionIfFileExists, EHTTPCorvFileUpload InDirectoryType,
	FString InFilePathWithFileName, FString InOptionalRequestID, int32 InFileSizeStepsInBytes)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload({}, InUrl, InHeader, InActionIfFileExists,
		InDirectoryType, InFilePathWithFileName, Node->requestID, Node->httpRequests, Node->requestID, InFileSizeStepsInBytes);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Upload_POST_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, FString InFilePath, FString InFileID,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST(
		{}, InUrl, InHeader, InDirectoryType, InFilePath, InFileID, InPOSTData, Node->requestID, Node->httpRequests, Node->requestID);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Upload_PUT_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, FString InFilePath, FString InFileID,
	EHTTPCorvFileUploadType InUploadType, FString InOptionalRequestID)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
		{}, InUrl, InHeader, InDirectoryType, InFilePath, InFileID, InUploadType, Node->requestID, Node->httpRequests, Node->requestID);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Multi_Upload_POST_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, TArray<FString> InFilePaths, TArray<FString> InFileIDs,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(
		{}, InUrl, InHeader, InDirectoryType, InFilePaths, InFileIDs, InPOSTData, Node->requestID, Node->httpRequests, Node->requestID);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

UAsyncNodeHttpDownloadUpload* UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST(FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, TArray<FString> InFilePaths, TArray<FString> InFileIDs,
	FString InOptionalRequestID)
{
	UAsyncNodeHttpDownloadUpload* Node = CorvaneDownloadUploadNode::make(InOptionalRequestID);
	const int32 StatusCode = UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT(
		{}, InUrl, InHeader, InDirectoryType, InFilePaths, InFileIDs, Node->requestID, Node->httpRequests, Node->requestID);
	return CorvaneDownloadUploadNode::finish(Node, StatusCode);
}

void UAsyncNodeHttpDownloadUpload::Activate()
{
	UCorvaneBPLibrary::startAll(httpRequests); // none when the builder refused
}

void UAsyncNodeHttpDownloadUpload::httpRequestDownloadUploadComplete(
	FString InDataString, const TArray<FString>& InDataArray, const TArray<FString>& InHeader, int32 InStatusCode, FString InRequestID)
{
	CorvaneNode::giveUpID(*this, requestID);
	const auto& Outcome = CorvaneNode::isSuccess(InStatusCode) ? OnSuccess : OnFail;
	Outcome.Broadcast(MoveTemp(InDataString), InDataArray, InHeader, InStatusCode, InRequestID);
	CorvaneNode::release(*this);
}
