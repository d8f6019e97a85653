#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"
#include "Misc/DateTime.h"

namespace CorvaneDownloadProgress
{
	constexpr float mebibytesPerByte = 9.536743e-7f;
	constexpr float mebibitsPerByte = 7.6293945e-6f;
} // namespace CorvaneDownloadProgress

void UCorvaneRequestCompleteObject::requestProgressDownloadInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	using namespace CorvaneDownloadProgress;
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (83)."));
		return;
	}
	if (!InRequest.IsValid() || cancelIfAsked(InRequest))
	{
		return;
	}
	const FHttpResponsePtr Response = InRequest->GetResponse();
	if (!Response.IsValid())
	{
		return;
	}
	// A resumed download counts what is on disk already, on both sides of the division.
	const uint64 Start = static_cast<uint64>(fileCancelResumeDownloadByteStart);
	const float Received = static_cast<float>(InBytesReceived + Start);
	const float Known = static_cast<float>(Response->GetContentLength() + Start);
	const float Total = Known > 0 ? Known : 1.0f;
	measureSpeed(static_cast<int64>(InBytesReceived + Start));
	CorvaneDelivery::downloadProgress(
		corvaneBPLibrary, Total * mebibytesPerByte, Received * mebibytesPerByte, Received / Total * 100, megabitSpeed, requestID);
}

void UCorvaneRequestCompleteObject::measureSpeed(int64 InBytes)
{
	const int64 Now = FDateTime::Now().GetTicks();
	if (lastProgressTime != 0 && Now - lastProgressTime < ETimespan::TicksPerSecond)
	{
		return;
	}
	if (lastProgressTime != 0)
	{
		// The amount since the last measurement; it is not divided by the time, which is a second or a little more.
		megabitSpeed = static_cast<float>(InBytes - lastProgressBytes) * CorvaneDownloadProgress::mebibitsPerByte;
	}
	lastProgressBytes = InBytes;
	lastProgressTime = Now;
}
