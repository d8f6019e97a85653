#include "CorvaneBPLibrary.h"

#include "Containers/StringConv.h"
#include "Requests/RequestBuilder.h"
#include "Rules/StatusCodes.h"

namespace CorvaneIndividual
{
	static bool isHeaderUsable(const TMap<FString, FString>& Header)
	{
		if (Header.IsEmpty())
		{
			UE_LOG(LogTemp, Error,
				TEXT(
					"Cancel Request : You have not specified a header. An HTTP request does not work without a header. Add headers like user-agent,Content-Type,Content-Length"));
			return false;
		}
		if (!Header.Contains(TEXT("Content-Type")))
		{
			UE_LOG(LogTemp, Error,
				TEXT(
					"Cancel Request : The Content-Type header is missing. This can cause a crash in some UE versions. Therefore the request is not executed. Please also pay attention to upper and lower case."));
			return false;
		}
		return true;
	}

	static bool isVerbKnown(const FString& UpperVerb)
	{
		static const TCHAR* const verbs[] = {TEXT("GET"), TEXT("HEAD"), TEXT("POST"), TEXT("PUT"), TEXT("DELETE"), TEXT("TRACE"),
			TEXT("OPTIONS"), TEXT("CONNECT"), TEXT("PATCH")};
		for (const TCHAR* Verb : verbs)
		{
			if (UpperVerb == Verb)
			{
				return true;
			}
		}
		UE_LOG(LogTemp, Error, TEXT("Cancel Request : Wrong verb. Possible values:GET,HEAD,POST,PUT,DELETE,TRACE,OPTIONS,CONNECT,PATCH"));
		return false;
	}

	static void addContentLength(const FString& UpperVerb, const FString& Body, bool bPathOfFile, TMap<FString, FString>& Header)
	{
		if (UpperVerb == TEXT("GET"))
		{
			UE_LOG(LogTemp, Warning,
				TEXT("Corv Plugin: Setting a Content-Length header for a GET request can lead to an error on the server. "));
		}
		if (Body.IsEmpty())
		{
			UE_LOG(LogTemp, Warning,
				TEXT("Corv Plugin: Setting a Content-Length header with the value 0 can lead to an error on the server. "));
		}
		if (bPathOfFile)
		{
			UE_LOG(LogTemp, Warning,
				TEXT(
					"Corv Plugin: The Content-Length header has the length of the path, not that of the file, so the server will not read the file as it is. Switch addContentLengthHeader off: the length of the file is then sent by itself."));
		}
		Header.Add(TEXT("Content-Length"), UCorvaneBPLibrary::Int64ToFString(FTCHARToUTF8(*Body, Body.Len()).Length()));
	}
} // namespace CorvaneIndividual

void UCorvaneBPLibrary::CreateHttpRequestIndividual(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, FString InVerb, EHTTPCorvIndividualType InContentBodyType, FString InContentBody,
	FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID, bool bInAddContentLengthHeader,
	bool bInBindDownloadProgressEvent, bool bInBindUploadProgressEvent, bool bInBindServerSendEvent)
{
	const FString Verb = InVerb.ToUpper();
	if (!CorvaneIndividual::isHeaderUsable(InHeader) || !CorvaneBuilder::isUrlLongEnough(InUrl) || !CorvaneIndividual::isVerbKnown(Verb))
	{
		// A waiting node has put its ID into the output before the call; a plain script call usually has not.
		UCorvaneBPLibrary* Library = getCorvaneTarget();
		fireErrorMessageInGameThread(
			Library ? Library->getUAsyncNodeHttpRequest(OutRequestID) : nullptr, CorvaneStatus::refused, OutRequestID);
		return;
	}
	const bool bStream = InContentBodyType == EHTTPCorvIndividualType::STREAM;
	if (bInAddContentLengthHeader)
	{
		CorvaneIndividual::addContentLength(Verb, InContentBody, bStream, InHeader);
	}

	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	FhttpRequest Record =
		CorvaneBuilder::makeRecord(bStream ? EHTTPCorvRequestType::INDIVIDUAL_STREAM : EHTTPCorvRequestType::INDIVIDUAL, InUrl, InHeader);
	Record.verb = Verb;
	Record.content = InContentBody;
	Record.bindDownloadProgressEvent = bInBindDownloadProgressEvent;
	Record.bindUploadProgressEvent = bInBindUploadProgressEvent;
	Record.bindServerSendEvent = bInBindServerSendEvent;
	CorvaneBuilder::append(MoveTemp(Record), OutRequestID, InOtherHttpRequests, OutHttpRequests);
}
