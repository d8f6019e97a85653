#include "Requests/RequestBuilder.h"

#include "Completion/FollowUp.h"
#include "CorvaneRequestCompleteObject.h"
#include "Misc/Guid.h"
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

int32 CorvaneBuilder::refuse(const FString& RequestID)
{
	constexpr int32 refused = 400;
	const UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget();
	if (Library && !CorvaneFollowUp::isBuilding())
	{
		Library->onhttpRequestCompleteDelegate.Broadcast(FString(), {}, {}, refused, {}, RequestID);
	}
	return refused;
}

UCorvaneRequestCompleteObject* CorvaneBuilder::append(
	FhttpRequest Record, const FString& RequestID, TArray<FhttpRequest>& OtherHttpRequests, TArray<FhttpRequest>& HttpRequests)
{
	UCorvaneRequestCompleteObject* Object = NewObject<UCorvaneRequestCompleteObject>();
	Object->setRequestID(RequestID, Record, UCorvaneBPLibrary::getCorvaneTarget());
	Record.setRequestCompleteObject(Object);
	OtherHttpRequests.Add(MoveTemp(Record));
	HttpRequests = MoveTemp(OtherHttpRequests);
	return Object;
}

int32 CorvaneBuilder::checkAndAppend(FhttpRequest Record, const FString& OptionalRequestID, TArray<FhttpRequest>& OtherHttpRequests,
	TArray<FhttpRequest>& HttpRequests, FString& RequestID)
{
	RequestID = idOrNew(OptionalRequestID);
	if (!isUrlLongEnough(Record.url))
	{
		return refuse(RequestID);
	}
	append(MoveTemp(Record), RequestID, OtherHttpRequests, HttpRequests);
	return 0;
}
