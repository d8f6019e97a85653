#include "Requests/RequestBuilder.h"

#include "CorvaneRequestCompleteObject.h"
#include "Misc/Guid.h"
#include "Requests/Refusal.h"
#include "UObject/UObjectGlobals.h"

FString CorvaneBuilder::idOrNew(const FString& OptionalRequestID)
{
	return OptionalRequestID.IsEmpty() ? FGuid::NewGuid().ToString() : OptionalRequestID;
}

bool CorvaneBuilder::isUrlLongEnough(const FString& Url)
{
	constexpr int32 shortestUrl = 3;
	if (Url.Len() < shortestUrl)
	{
		UE_LOG(LogTemp, Error, TEXT("Cancel Request : URL to short."));
		return false;
	}
	return true;
}

FhttpRequest CorvaneBuilder::makeRecord(EHTTPCorvRequestType Type, FString Url, TMap<FString, FString> Header)
{
	FhttpRequest Record;
	Record.requestType = Type;
	Record.url = MoveTemp(Url);
	Record.header = MoveTemp(Header);
	return Record;
}

UCorvaneRequestCompleteObject* CorvaneBuilder::append(
	FhttpRequest&& Record, const FString& RequestID, TArray<FhttpRequest>& OtherHttpRequests, TArray<FhttpRequest>& HttpRequests)
{
	UCorvaneRequestCompleteObject* Object = NewObject<UCorvaneRequestCompleteObject>();
	Object->setRequestID(RequestID, Record, UCorvaneBPLibrary::getCorvaneTarget());
	Record.setRequestCompleteObject(Object);
	if (OtherHttpRequests.IsEmpty())
	{
		OtherHttpRequests.Reserve(1); // as a rule it stays alone, and an array makes room for several
	}
	OtherHttpRequests.Add(MoveTemp(Record));
	HttpRequests = MoveTemp(OtherHttpRequests);
	return Object;
}

int32 CorvaneBuilder::checkAndAppend(FhttpRequest&& Record, const FString& OptionalRequestID, TArray<FhttpRequest>& OtherHttpRequests,
	TArray<FhttpRequest>& HttpRequests, FString& RequestID)
{
	RequestID = idOrNew(OptionalRequestID);
	if (!isUrlLongEnough(Record.url))
	{
		return CorvaneRefusal::atOnce(RequestID);
	}
	append(MoveTemp(Record), RequestID, OtherHttpRequests, HttpRequests);
	return 0;
}
