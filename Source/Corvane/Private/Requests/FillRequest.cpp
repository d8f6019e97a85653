#include "CorvaneBPLibrary.h"

#include "Containers/StringConv.h"
#include "CorvaneRequestCompleteObject.h"
#include "Downloads/DownloadTargets.h"
#include "Rules/DownloadRules.h"
#include "Rules/Multipart.h"
#include "Rules/UploadTail.h"
#include "Uploads/UploadBody.h"
#include "Uploads/UploadFile.h"

namespace CorvaneFillRequest
{
	static const TCHAR* const formType = TEXT("application/x-www-form-urlencoded");

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
} // namespace CorvaneFillRequest

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
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneFillRequest::formType);
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
	OutHttpRequest.SetHeader(TEXT("Content-Type"), CorvaneFillRequest::formType);
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
	const bool bStream = CorvaneRules::bodyBeginsInContentLength(InRequest);
	const bool bLengthIsSet = bStream || InRequest.requestType == EHTTPCorvRequestType::POST;
	CorvaneFillRequest::setHeaders(persistentHeaders, bLengthIsSet, OutHttpRequest); // only the record itself may know better
	CorvaneFillRequest::setHeaders(InRequest.header, bStream, OutHttpRequest);
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
