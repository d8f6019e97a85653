#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "Downloads/Download.h"
#include "HttpModule.h"
#include "Misc/ScopeLock.h"
#include "Requests/HttpLayer.h"
#include "Requests/Refusal.h"
#include "Rules/UploadTail.h"
#include "Runs/Run.h"
#include "UObject/UObjectGlobals.h"

namespace CorvaneDispatcher
{
	// A header of the script or a persistent one replaces it.
	static const FString& defaultUserAgent()
	{
		static const FString UserAgent(
			TEXT("UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/69.0.3497.81 Safari/537.36"));
		return UserAgent;
	}

	static bool isUpload(const FhttpRequest& Record)
	{
		switch (Record.requestType)
		{
		case EHTTPCorvRequestType::PUT:
		case EHTTPCorvRequestType::PUT_STREAM_MP:
		case EHTTPCorvRequestType::PUT_STREAM_BLANK:
		case EHTTPCorvRequestType::PUT_STREAM_COPY:
		case EHTTPCorvRequestType::POST_UPLOAD:
			return true;
		default:
			return false;
		}
	}

	static bool takesTwoSteps(const FhttpRequest& Record)
	{
		return Record.requestType == EHTTPCorvRequestType::GET && Record.requestCompleteObject()->getMultiStepDownload() > 0;
	}

	/** Whether a request is entered under its ID in the map of running ones. */
	static bool isEntered(const FhttpRequest& Record)
	{
		return Record.requestType != EHTTPCorvRequestType::GETLowRamDownload && !takesTwoSteps(Record);
	}

	/** One progress callback per request: the last of these that applies wins. */
	static void bind(const FhttpRequest& Record, UCorvaneRequestCompleteObject* Object, IHttpRequest& HttpRequest)
	{
		using FObject = UCorvaneRequestCompleteObject;
		HttpRequest.OnStatusCodeReceived().BindUObject(Object, &FObject::requestStatusCode);
		HttpRequest.OnHeaderReceived().BindUObject(Object, &FObject::requestHeader);
		FHttpRequestProgressDelegate64& Progress = HttpRequest.OnRequestProgress64();
		if (Record.requestType == EHTTPCorvRequestType::GETLowRamDownload)
		{
			Progress.BindUObject(Object, &FObject::requestProgressDownloadLowRam);
			HttpRequest.OnProcessRequestComplete().BindUObject(Object, &FObject::requestCompleteLowRam);
			return;
		}
		if (takesTwoSteps(Record))
		{
			Progress.BindUObject(Object, &FObject::requestMultiStepDownload);
			HttpRequest.OnProcessRequestComplete().BindUObject(Object, &FObject::requestMultiStepComplete);
			return;
		}
		HttpRequest.OnProcessRequestComplete().BindUObject(Object, &FObject::requestComplete);
		if (Record.bindServerSendEvent) // its bytes are taken as they come, so there is no other progress
		{
			Object->run().collectEvents();
			FHttpRequestStreamDelegateV2 Bytes;
			Bytes.BindUObject(Object, &FObject::takeEventBytes);
			HttpRequest.SetResponseBodyReceiveStreamDelegateV2(MoveTemp(Bytes));
			return;
		}
		const bool bIndividual = Record.requestType >= EHTTPCorvRequestType::INDIVIDUAL;
		if (!bIndividual || Record.bindDownloadProgressEvent)
		{
			Progress.BindUObject(Object, &FObject::requestProgressDownload);
		}
		if (isUpload(Record) || (bIndividual && Record.bindUploadProgressEvent))
		{
			Progress.BindUObject(Object, &FObject::requestProgressUpload);
		}
	}

	/** Bytes that are written to a file, or counted from one, must be the file's own. */
	static void refuseCompression(const UCorvaneRequestCompleteObject& Object, IHttpRequest& HttpRequest)
	{
		const bool bOwnBytes = !Object.getFileCancelResumeDownloadDir().IsEmpty() || !HttpRequest.GetHeader(TEXT("Range")).IsEmpty();
		if (bOwnBytes && HttpRequest.GetHeader(TEXT("Accept-Encoding")).IsEmpty())
		{
			HttpRequest.SetHeader(TEXT("Accept-Encoding"), TEXT("identity"));
		}
	}

	static FString verbOf(const FhttpRequest& Record)
	{
		const bool bForm = Record.requestType == EHTTPCorvRequestType::POST || Record.requestType == EHTTPCorvRequestType::POST_UPLOAD;
		return bForm ? FString(TEXT("POST")) : Record.verb;
	}

	/** @return false, with a line in the log, for what would end the process in the HTTP layer. */
	static bool isTakenByLayer(const FhttpRequest& Record, const IHttpRequest& HttpRequest)
	{
		const FString Verb = verbOf(Record);
		if (!Verb.IsEmpty() && !CorvaneHttpLayer::sends(Verb))
		{
			UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: The HTTP layer of this engine cannot send %s requests."), *Verb);
			return false;
		}
		const bool bNeedsType = Verb == TEXT("POST") || Verb == TEXT("DELETE");
		const bool bHasBody = HttpRequest.GetContentLength() > 0 || Record.requestCompleteObject()->getUploadSize() > 0;
		if (bNeedsType && bHasBody && HttpRequest.GetHeader(TEXT("Content-Type")).IsEmpty())
		{
			UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: A %s with a body needs a Content-Type."), *Verb);
			return false;
		}
		return true;
	}
} // namespace CorvaneDispatcher

void UCorvaneBPLibrary::startAll(TArray<FhttpRequest>& InHttpRequests)
{
	// Taken first: a handler that runs meanwhile may start requests through the same array.
	TArray<FhttpRequest> Taken = MoveTemp(InHttpRequests);
	InHttpRequests.Empty();
	for (FhttpRequest& Request : Taken)
	{
		const UCorvaneRequestCompleteObject* Object = Request.requestCompleteObject();
		UCorvaneBPLibrary* Owner = IsValid(Object) ? Object->getLibrary() : nullptr;
		if (!Owner) // gone, or not there when the record was built
		{
			UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (153)."));
			continue;
		}
		if (Owner->isShuttingDown)
		{
			UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (startRequests): The module is shutting down."));
			continue;
		}
		Owner->startRequest(Request);
	}
}

void UCorvaneBPLibrary::startRequest(FhttpRequest& InRequest)
{
	UCorvaneRequestCompleteObject* Object = InRequest.requestCompleteObject();
	const FString ID = Object->getRequestID();
	if (!Object->initCorv())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: The request is still running and was not started again. %s"), *ID);
		return;
	}
	dropCancelMark(ID); // an old mark is not meant for this request; one for a run that goes on is

	const FHttpRequestPtr HttpRequest = FHttpModule::Get().CreateRequest();
	HttpRequest->SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy::CompleteOnHttpThread);
	HttpRequest->SetHeader(TEXT("User-Agent"), CorvaneDispatcher::defaultUserAgent());
	if (!fillRequest(InRequest, *HttpRequest) || !CorvaneDispatcher::isTakenByLayer(InRequest, *HttpRequest))
	{
		CorvaneRefusal::ofRun(InRequest);
		return;
	}
	if (!CorvaneRules::bodyBeginsInContentLength(InRequest)) // whose Content-Length has to stay the last header
	{
		CorvaneDispatcher::refuseCompression(*Object, *HttpRequest);
	}
	CorvaneDispatcher::bind(InRequest, Object, *HttpRequest);
	Object->run().setRequest(HttpRequest);
	Object->download().file.claim();
	if (CorvaneDispatcher::isEntered(InRequest))
	{
		FScopeLock Lock(&mapLock);
		runningRequests.Add(ID, HttpRequest);
	}
	HttpRequest->ProcessRequest();
}
