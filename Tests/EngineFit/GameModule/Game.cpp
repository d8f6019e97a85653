// What a game's native code does with the plug-in, one of each kind. It is linked, never run.

#include "Game.h"

#include "CorvaneRequestCompleteObject.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/UObjectGlobals.h"

void UGameListener::ended(
	const FString, const TArray<FString>&, const TArray<FString>&, int32 statusCode, const TArray<uint8>& byteData, const FString)
{
	bool success = false;
	FString text;
	UFileFunctionsCorv::addBytesToFile(EFileFunctionsCorvDirectoryType::E_gd, TEXT("answer"), byteData, success);
	UFileFunctionsCorv::readStringFromFile(EFileFunctionsCorvDirectoryType::E_gd, TEXT("answer"), success, text);
	UCorvaneBPLibrary::byteDataToFile(EHTTPCorvFileBytesToFileActionType::E_OVERWRITE, byteData, EHTTPCorvFileUpload::E_gd,
		UCorvaneBPLibrary::Int64ToFString(statusCode));
}

void UGameListener::fileEnded(const FString, const TArray<FString>&, const TArray<FString>&, int32, const FString requestID)
{
	UCorvaneBPLibrary::cancelRequest(requestID);
}

void UGameListener::informed(const FString, int64, int32, const FString, const FString) {}
void UGameListener::downloads(float, float, float, float, const FString) {}
void UGameListener::uploads(float, int32, float, const FString) {}
void UGameListener::hears(const FString, const FString) {}

void UGameNode::httpRequestComplete(FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
	const TArray<uint8>& byteData, FString requestID)
{
	UCorvaneBPLibrary::corv->unregisterUAsyncNodeHttpRequest(requestID);
	Super::httpRequestComplete(dataString, dataArray, header, statusCode, byteData, requestID);
	SetReadyToDestroy();
}

namespace Game
{
	void listen(UGameListener* Listener)
	{
		UCorvaneBPLibrary* const Target = UCorvaneBPLibrary::getCorvaneTarget();
		Target->onhttpRequestCompleteDelegate.AddUniqueDynamic(Listener, &UGameListener::ended);
		Target->onhttpRequestCompleteGoogleInfoDelegate.AddUniqueDynamic(Listener, &UGameListener::informed);
		Target->onhttpFileDownloadDelegate.AddUniqueDynamic(Listener, &UGameListener::downloads);
		Target->onhttpFileUploadDelegate.AddUniqueDynamic(Listener, &UGameListener::uploads);
		Target->onhttpServerSendEventDelegate.AddUniqueDynamic(Listener, &UGameListener::hears);
		Target->onhttpServerSendEventDelegate.Broadcast(TEXT("data: a"), TEXT("id"));
		Target->onhttpFileUploadDelegate.Broadcast(1.0f, 1, 100.0f, TEXT("id"));
	}

	void send()
	{
		TArray<FhttpRequest> Requests;
		FString Id;
		UCorvaneBPLibrary::CreateHttpRequestGET({}, TEXT("http://127.0.0.1/"), {}, FString(), true, Requests, Id);
		UCorvaneBPLibrary::corv->registerUAsyncNodeHttpRequest(Id, NewObject<UGameNode>());

		FhttpRequest Own = Requests[0];
		Own.url = UCorvaneBPLibrary::urlEncode(Own.url);
		Own.setRequestCompleteObject(NewObject<UCorvaneRequestCompleteObject>());
		Own.requestCompleteObject()->setRequestID(Own.requestCompleteObject()->getRequestID(), Own, GetMutableDefault<UGameLibrary>());
		Requests.Add(Own);

		UCorvaneBPLibrary* Target = Cast<UCorvaneBPLibrary>(NewObject<UGameFiles>());
		UCorvaneBPLibrary::executeHttpRequests(Requests, Target);
	}

	void await(UGameListener* Listener)
	{
		UAsyncNodeHttpRequest* const Get =
			UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(TEXT("http://127.0.0.1/"), {}, FString(), false);
		Get->OnSuccess.AddUniqueDynamic(Listener, &UGameListener::ended);
		Get->Activate();
		UAsyncNodeHttpDownloadUpload* const Download = UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Download_REQUEST(
			TEXT("http://127.0.0.1/"), {}, EHTTPCorvFileDownloadResumeType::E_RESUME, EHTTPCorvFileUpload::E_gd, TEXT("file"), FString());
		Download->OnFail.AddUniqueDynamic(Listener, &UGameListener::fileEnded);
		Download->Activate();
		UAsyncNodeHttpGoogleFileInfoRequest* const Info =
			UAsyncNodeHttpGoogleFileInfoRequest::AsyncExecuteHTTP_GoogleFileInfo_REQUEST(TEXT("id"));
		Info->OnSuccess.AddUniqueDynamic(Listener, &UGameListener::informed);
		Info->Activate();
	}

	bool isReflected()
	{
		return StaticEnum<EHTTPCorvFileUpload>() && StaticEnum<EHTTPCorvRequestType>() && FhttpRequest::StaticStruct() &&
			   UAsyncNodeCorv::StaticClass();
	}
} // namespace Game
