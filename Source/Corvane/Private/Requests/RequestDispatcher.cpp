#include "CorvaneBPLibrary.h"

#include "Completion/GameThreadDelivery.h"
#include "Completion/RunningRequests.h"
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
	if (!IsValid(Object))
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
	fillRequestGET(InRequest, *HttpRequest);
	fillHeader(InRequest, *HttpRequest);

	if (InRequest.bindServerSendEvent)
	{
		HttpRequest->OnRequestProgress64().BindUObject(Object, &UCorvaneRequestCompleteObject::requestProgressServerSendEvent);
	}
	else
	{
		HttpRequest->OnRequestProgress64().BindUObject(Object, &UCorvaneRequestCompleteObject::requestProgressDownload);
	}
	HttpRequest->OnProcessRequestComplete().BindUObject(Object, &UCorvaneRequestCompleteObject::requestComplete);
	Object->setHttpRequest(HttpRequest);
	{
		FScopeLock Lock(&mapLock);
		runningRequests.Add(ID, HttpRequest);
	}
	HttpRequest->ProcessRequest();
}

void UCorvaneBPLibrary::fillRequestGET(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	OutHttpRequest.SetHeader(TEXT("Content-Type"), TEXT("application/x-www-form-urlencoded"));
	OutHttpRequest.SetVerb(TEXT("GET"));
	OutHttpRequest.SetURL(InRequest.url);
}

void UCorvaneBPLibrary::fillHeader(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	for (const TPair<FString, FString>& Header : persistentHeaders)
	{
		OutHttpRequest.SetHeader(Header.Key, Header.Value);
	}
	for (const TPair<FString, FString>& Header : InRequest.header)
	{
		OutHttpRequest.SetHeader(Header.Key, Header.Value);
	}
}
