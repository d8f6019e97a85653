#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"

void UCorvaneRequestCompleteObject::requestProgressUploadInternal(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (53)."));
		return;
	}
	if (!InRequest.IsValid() || cancelIfAsked(InRequest))
	{
		return;
	}
	const float Known = static_cast<float>(InRequest->GetContentLength());
	const float Total = Known > 0 ? Known : 1.0f;
	const int32 Sent = static_cast<int32>(FMath::Min<uint64>(InBytesSent, MAX_int32)); // the event's pin has no more room
	CorvaneDelivery::uploadProgress(corvaneBPLibrary, Total, Sent, static_cast<float>(InBytesSent) / Total * 100, requestID);
}
