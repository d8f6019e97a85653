#include "CorvaneBPLibrary.h"

#include "Requests/RequestBuilder.h"

int32 UCorvaneBPLibrary::CreateHttpRequestGET(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl, TMap<FString, FString> InHeader,
	FString InOptionalRequestID, bool bInBindServerSendEvent, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::GET, MoveTemp(InUrl), MoveTemp(InHeader));
	Record.bindServerSendEvent = bInBindServerSendEvent;
	return CorvaneBuilder::checkAndAppend(MoveTemp(Record), InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
}

int32 UCorvaneBPLibrary::CreateHttpRequestPOST(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl, TMap<FString, FString> InHeader,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID, bool bInBindServerSendEvent, TArray<FhttpRequest>& OutHttpRequests,
	FString& OutRequestID)
{
	FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::POST, MoveTemp(InUrl), MoveTemp(InHeader));
	Record.POSTData = MoveTemp(InPOSTData);
	Record.bindServerSendEvent = bInBindServerSendEvent;
	return CorvaneBuilder::checkAndAppend(MoveTemp(Record), InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
}
