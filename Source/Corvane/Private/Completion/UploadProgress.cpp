#include "Completion/GameThreadDelivery.h"
#include "Completion/RunningRequests.h"
#include "CorvaneRequestCompleteObject.h"

void UCorvaneRequestCompleteObject::requestBodyHandedOut(FHttpRequestPtr, uint64 InBytesSent, uint64)
{
	requestProgressUpload(corvaneBPLibrary->runningRequestList().request(currentRun), InBytesSent, 0);
}

void UCorvaneRequestCompleteObject::requestProgressUploadInternal(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (53)."));
		return;
	}
	if (!InRequest.IsValid() || cancelIfAsked())
	{
		return;
	}
	uploadSent = FMath::Max(uploadSent, InBytesSent); // the body and the layer tell of it, perhaps on two threads
	// Not the request's own length: the layer forgets that of a stream before the last progress.
	const float Known = static_cast<float>(uploadSize);
	const float Total = Known > 0 ? Known : 1.0f;
	const float Percent = static_cast<float>(uploadSent) / Total * 100;
	const int32 Sent = static_cast<int32>(FMath::Min<uint64>(uploadSent, MAX_int32)); // the event's pin has no more room
	CorvaneDelivery::progress(corvaneBPLibrary, progressMail,
		[Total, Sent, Percent, ID = requestID](const UCorvaneBPLibrary& Library)
		{ Library.onhttpFileUploadDelegate.Broadcast(Total, Sent, Percent, ID); });
}
