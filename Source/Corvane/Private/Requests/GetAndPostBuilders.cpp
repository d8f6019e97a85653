#include "CorvaneBPLibrary.h"

#include "Requests/RequestBuilder.h"

int32 UCorvaneBPLibrary::CreateHttpRequestGET(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl, TMap<FString, FString> InHeader,
	FString InOptionalRequestID, bool bInBindServerSendEvent, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	if (!CorvaneBuilder::isUrlLongEnough(InUrl))
	{
		return CorvaneBuilder::refuse(OutRequestID);
	}

	FhttpRequest Record;
	Record.url = InUrl;
	Record.header = InHeader;
	Record.bindServerSendEvent = bInBindServerSendEvent;
	CorvaneBuilder::append(Record, OutRequestID, InOtherHttpRequests, OutHttpRequests);
	return 0;
}

int32 UCorvaneBPLibrary::CreateHttpRequestPOST(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl, TMap<FString, FString> InHeader,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID, bool bInBindServerSendEvent, TArray<FhttpRequest>& OutHttpRequests,
	FString& OutRequestID)
{
	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	if (!CorvaneBuilder::isUrlLongEnough(InUrl))
	{
		return CorvaneBuilder::refuse(OutRequestID);
	}

	FhttpRequest Record;
	Record.url = InUrl;
	Record.header = InHeader;
	Record.POSTData = InPOSTData;
	Record.requestType = EHTTPCorvRequestType::POST;
	Record.bindServerSendEvent = bInBindServerSendEvent;
	CorvaneBuilder::append(Record, OutRequestID, InOtherHttpRequests, OutHttpRequests);
	return 0;
}
