#include "CorvaneBPLibrary.h"

#include "Containers/StringConv.h"
#include "CorvaneRequestCompleteObject.h"
#include "Downloads/Download.h"
#include "HttpModule.h"
#include "Misc/ScopeLock.h"
#include "Requests/HttpLayer.h"
#include "Requests/Refusal.h"
#include "Rules/DownloadRules.h"
#include "Rules/Multipart.h"
#include "Runs/Run.h"
#include "UObject/UObjectGlobals.h"
#include "Uploads/UploadBody.h"
#include "Uploads/UploadFile.h"

namespace CorvaneDispatcher
{
	// A header of the script or a persistent one replaces it.
	static const TCHAR* const defaultUserAgent =
		TEXT("UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/69.0.3497.81 Safari/537.36");

	static const TCHAR* const formType = TEXT("application/x-www-form-urlencoded");

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

	/** Such a Content-Length has to be the last header, and an earlier one would keep its place. */
	static bool bodyBeginsInContentLength(const FhttpRequest& Record)
	{
		return Record.requestType == EHTTPCorvRequestType::PUT_STREAM_MP || Record.requestType == EHTTPCorvRequestType::PUT_STREAM_COPY;
	}

	static void setHeaders(const TMap<FString, FString>& Headers, bool bWithoutLength, IHttpRequest& HttpRequest)
	{
		for (const TPair<FString, FString>& Header : Headers)
		{
			if (!bWithoutLength || Header.Key != TEXT("Content-Length"))
			{
				HttpRequest.SetHeader(Header.Key, Header.Value);
			}
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
	takeCancelMark(ID); // an old mark is not meant for this request; one for a run that goes on is

	const FHttpRequestPtr HttpRequest = FHttpModule::Get().CreateRequest();
	HttpRequest->SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy::CompleteOnHttpThread);
	HttpRequest->SetHeader(TEXT("User-Agent"), CorvaneDispatcher::defaultUserAgent);
	if (!fillRequest(InRequest, *HttpRequest) || !CorvaneDispatcher::isTakenByLayer(InRequest, *HttpRequest))
	{
		CorvaneRefusal::ofRun(InRequest);
		return;
	}
	if (!CorvaneDispatcher::bodyBeginsInContentLength(InRequest)) // whose Content-Length has to stay the last header
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

bool UCorvaneBPLibrary::fillRequest(FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	switch (InRequest.requestType)
	{
	case EHTTPCorvRequestType::GET:
	case EHTTPCorvRequestType::GETLowRamDownload:
		fillRequestDownload(InRequest, OutHttpRequest);
		return true;
	case EHTTPCorvRequestType::POST:
		fillRequestPOST(InRequest, OutHttpRequest);
		fillHeader(InRequest, OutHttpRequest);
		return true;
	case EHTTPCorvRequestType::INDIVIDUAL:
	case EHTTPCorvRequestType::INDIVIDUAL_STREAM:
		return fillRequestIndividual(InRequest, OutHttpRequest);
	case EHTTPCorvRequestType::PUT:
	case EHTTPCorvRequestType::PUT_STREAM_MP:
	case EHTTPCorvRequestType::PUT_STREAM_BLANK:
	case EHTTPCorvRequestType::PUT_STREAM_COPY:
	case EHTTPCorvRequestType::POST_UPLOAD:
		fillHeader(InRequest, OutHttpRequest);
		return fillRequestUPLOAD(InRequest, OutHttpRequest);
	}
	UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: There are no requests of type %d."), static_cast<int32>(InRequest.requestType));
	return false; // no builder makes such a record
}

void UCorvaneBPLibrary::fillRequestGET(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneDispatcher::formType);
	OutHttpRequest.SetVerb(TEXT("GET"));
	OutHttpRequest.SetURL(InRequest.url);
}

void UCorvaneBPLibrary::fillRequestDownload(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	const UCorvaneRequestCompleteObject& Object = *InRequest.requestCompleteObject();
	const int64 Start = Object.getFileCancelResumeDownloadByteStart();
	fillRequestGET(InRequest, OutHttpRequest);
	if (InRequest.requestType == EHTTPCorvRequestType::GETLowRamDownload)
	{
		// Before the headers of the script, which may name another range.
		OutHttpRequest.SetHeader(TEXT("Range"), CorvaneRules::stepRange(Start, Object.getFileCancelResumeDownloadBytePartSize(),
													Object.getFileCancelResumeDownloadByteFullSize()));
	}
	fillHeader(InRequest, OutHttpRequest);
	if (InRequest.requestType == EHTTPCorvRequestType::GET && Start > 0)
	{
		OutHttpRequest.SetHeader(TEXT("Range"), CorvaneRules::rangeFrom(Start));
		const FString Version = downloadTargets->keptVersions.find(Object.getFileCancelResumeDownloadDir(), Start);
		if (!Version.IsEmpty() && OutHttpRequest.GetHeader(TEXT("If-Range")).IsEmpty())
		{
			OutHttpRequest.SetHeader(TEXT("If-Range"), Version); // of another version the whole comes, not the rest
		}
	}
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
	fillHeader(InRequest, OutHttpRequest);
	if (InRequest.requestType == EHTTPCorvRequestType::INDIVIDUAL_STREAM)
	{
		const FString Path = CorvaneUpload::onDisk(CorvaneUpload::fullPath(EHTTPCorvFileUpload::E_ad, InRequest.content));
		return CorvaneUpload::hasOwnEnd(*this, Path) && CorvaneUpload::sendFile(InRequest, InRequest.content, OutHttpRequest);
	}
	if (InRequest.bindUploadProgressEvent && !InRequest.content.IsEmpty())
	{
		CorvaneUpload::sendBytes(InRequest, CorvaneRules::fstringToByteArray(InRequest.content), OutHttpRequest);
	}
	else
	{
		OutHttpRequest.SetContentAsString(InRequest.content);
	}
	return true;
}

void UCorvaneBPLibrary::fillHeader(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	const bool bStream = CorvaneDispatcher::bodyBeginsInContentLength(InRequest);
	const bool bLengthIsSet = bStream || InRequest.requestType == EHTTPCorvRequestType::POST;
	CorvaneDispatcher::setHeaders(persistentHeaders, bLengthIsSet, OutHttpRequest); // only the record itself may know better
	CorvaneDispatcher::setHeaders(InRequest.header, bStream, OutHttpRequest);
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
