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
	CorvaneBuilder::attachCompleteObject(Record, OutRequestID);

	InOtherHttpRequests.Add(Record);
	OutHttpRequests = InOtherHttpRequests;
	return 0;
}
