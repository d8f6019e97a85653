#include "CorvaneBPLibrary.h"

#include "Completion/GameThreadDelivery.h"
#include "Containers/StringConv.h"
#include "CorvaneRequestCompleteObject.h"
#include "HttpModule.h"
#include "Misc/ScopeLock.h"
#include "UAsyncNodeCorv.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDispatcher
{
	// A header of the script or a persistent one replaces it.
	static const TCHAR* const defaultUserAgent =
		TEXT("UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/69.0.3497.81 Safari/537.36");

	static const TCHAR* const formType = TEXT("application/x-www-form-urlencoded");

	/** One progress callback per request: the last of these that applies wins. */
	static void bind(const FhttpRequest& Record, UCorvaneRequestCompleteObject* Object, IHttpRequest& HttpRequest)
	{
		using FObject = UCorvaneRequestCompleteObject;
		FHttpRequestProgressDelegate64& Progress = HttpRequest.OnRequestProgress64();
		const bool bIndividual = Record.requestType >= EHTTPCorvRequestType::INDIVIDUAL;
		if (!bIndividual || Record.bindDownloadProgressEvent)
		{
			Progress.BindUObject(Object, &FObject::requestProgressDownload);
		}
		if (bIndividual && Record.bindUploadProgressEvent)
		{
			Progress.BindUObject(Object, &FObject::requestProgressUpload);
		}
		if (Record.bindServerSendEvent)
		{
			Progress.BindUObject(Object, &FObject::requestProgressServerSendEvent);
		}
		HttpRequest.OnProcessRequestComplete().BindUObject(Object, &FObject::requestComplete);
	}

	/** Ends a request that was announced to scripts by its builder and cannot be started after all. */
	static void refuse(UCorvaneBPLibrary* Library, UCorvaneRequestCompleteObject* Object)
	{
		FCorvCompletion Refusal;
		Refusal.statusCode = 400;
		Refusal.requestID = Object->getRequestID();
		CorvaneDelivery::completion(Library, nullptr, MoveTemp(Refusal));
		Object->abandonRun();
	}
} // namespace CorvaneDispatcher

void UCorvaneBPLibrary::startRequests(TArray<FhttpRequest>& InHttpRequests)
{
	// Taken first: a handler that runs meanwhile may start requests through the same array.
	TArray<FhttpRequest> Taken = MoveTemp(InHttpRequests);
	InHttpRequests.Empty();
	if (isShuttingDown)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (startRequests): The module is shutting down."));
		return;
	}
	for (FhttpRequest& Request : Taken)
	{
		startRequest(Request);
	}
}

void UCorvaneBPLibrary::startRequest(FhttpRequest& InRequest)
{
	UCorvaneRequestCompleteObject* Object = InRequest.requestCompleteObject();
	if (!IsValid(Object) || Object->getLibrary() != this) // or it was built when no library was there to report to
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (153)."));
		return;
	}
	const FString ID = Object->getRequestID();
	takeCancelMark(ID); // an old mark is not meant for this request
	if (!Object->initCorv())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: The request is still running and was not started again. %s"), *ID);
		return;
	}
	if (!Object->isWorkerStarted())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: No thread for the request. %s"), *ID);
		CorvaneDispatcher::refuse(this, Object);
		return;
	}

	const FHttpRequestPtr HttpRequest = FHttpModule::Get().CreateRequest();
	HttpRequest->SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy::CompleteOnHttpThread);
	HttpRequest->SetHeader(TEXT("User-Agent"), CorvaneDispatcher::defaultUserAgent);
	if (!fillRequest(InRequest, *HttpRequest))
	{
		CorvaneDispatcher::refuse(this, Object);
		return;
	}
	CorvaneDispatcher::bind(InRequest, Object, *HttpRequest);
	Object->setHttpRequest(HttpRequest);
	{
		FScopeLock Lock(&mapLock);
		runningRequests.Add(ID, HttpRequest);
	}
	HttpRequest->ProcessRequest();
}

bool UCorvaneBPLibrary::fillRequest(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	switch (InRequest.requestType)
	{
	case EHTTPCorvRequestType::GET:
		fillRequestGET(InRequest, OutHttpRequest);
		fillHeader(InRequest, OutHttpRequest);
		return true;
	case EHTTPCorvRequestType::POST:
		fillRequestPOST(InRequest, OutHttpRequest);
		fillHeader(InRequest, OutHttpRequest);
		return true;
	case EHTTPCorvRequestType::INDIVIDUAL:
	case EHTTPCorvRequestType::INDIVIDUAL_STREAM:
		return fillRequestIndividual(InRequest, OutHttpRequest);
	default:
		return false; // no builder makes these
	}
}

void UCorvaneBPLibrary::fillRequestGET(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneDispatcher::formType);
	OutHttpRequest.SetVerb(TEXT("GET"));
	OutHttpRequest.SetURL(InRequest.url);
}

void UCorvaneBPLibrary::fillRequestPOST(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneDispatcher::formType);
	OutHttpRequest.SetVerb(TEXT("POST"));
	OutHttpRequest.SetURL(InRequest.url);
	const FString Body = postMapToString(InRequest.POSTData);
	OutHttpRequest.SetContentAsString(Body);
	OutHttpRequest.SetHeader(TEXT("Content-Length"), Int64ToFString(FTCHARToUTF8(*Body, Body.Len()).Length()));
}

bool UCorvaneBPLibrary::fillRequestIndividual(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	OutHttpRequest.SetVerb(InRequest.verb);
	OutHttpRequest.SetURL(InRequest.url);
	if (InRequest.requestType == EHTTPCorvRequestType::INDIVIDUAL)
	{
		OutHttpRequest.SetContentAsString(InRequest.content);
	}
	else if (!OutHttpRequest.SetContentAsStreamedFile(InRequest.content))
	{
		// Sent without its file, the request could replace what the server holds by nothing.
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Can't read File: %s"), *InRequest.content);
		return false;
	}
	fillHeader(InRequest, OutHttpRequest);
	return true;
}

void UCorvaneBPLibrary::fillHeader(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	const bool bLengthIsSet = InRequest.requestType == EHTTPCorvRequestType::POST;
	for (const TPair<FString, FString>& Header : persistentHeaders)
	{
		if (!bLengthIsSet || Header.Key != TEXT("Content-Length")) // only the record itself may know better
		{
			OutHttpRequest.SetHeader(Header.Key, Header.Value);
		}
	}
	for (const TPair<FString, FString>& Header : InRequest.header)
	{
		OutHttpRequest.SetHeader(Header.Key, Header.Value);
	}
}

FString UCorvaneBPLibrary::postMapToString(const TMap<FString, FString>& InMap)
{
	FString Body;
	for (const TPair<FString, FString>& Field : InMap)
	{
		Body += (Body.IsEmpty() ? TEXT("") : TEXT("&")) + Field.Key + TEXT("=") + Field.Value;
	}
	return Body;
}
