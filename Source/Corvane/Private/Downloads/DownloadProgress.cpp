#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"
#include "Misc/DateTime.h"
#include "Misc/Timespan.h"

namespace CorvaneDownloadProgress
{
	constexpr float mebibytesPerByte = 9.536743e-7f;
	constexpr float mebibitsPerByte = 7.6293945e-6f;
} // namespace CorvaneDownloadProgress

void UCorvaneRequestCompleteObject::requestProgressDownloadInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (83)."));
		return;
	}
	if (InRequest.IsValid() && !cancelIfAsked() && bodySize >= 0)
	{
		reportBody(InBytesReceived, static_cast<uint64>(bodySize));
	}
}

void UCorvaneRequestCompleteObject::requestMultiStepDownloadInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (83)."));
		return;
	}
	constexpr int32 secondStep = 2;
	const bool bGoesOn = InRequest.IsValid() && !cancelIfAsked();
	if (bGoesOn && multiStepDownload == secondStep && bodySize >= 0) // a page on the way to the file is no part of it
	{
		reportBody(InBytesReceived, static_cast<uint64>(HTMLFileSize > 0 ? HTMLFileSize : bodySize.load()));
	}
}

void UCorvaneRequestCompleteObject::reportBody(uint64 InBytesReceived, uint64 InBodySize)
{
	// A resumed download counts what is on disk already, on both sides of the division.
	const uint64 Start = static_cast<uint64>(fileCancelResumeDownloadByteStart);
	const uint64 Received = InBytesReceived + Start;
	const float Known = static_cast<float>(InBodySize + Start);
	measureSpeed(static_cast<int64>(Received));
	reportDownload(Known > 0 ? Known : 1.0f, static_cast<float>(Received));
}

void UCorvaneRequestCompleteObject::requestProgressDownloadLowRamInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (127)."));
		return;
	}
	if (!InRequest.IsValid() || cancelIfAsked() || bodySize < 0)
	{
		return;
	}
	endUnwantedBody(InRequest, InBytesReceived);
	// Over the whole file, not over this step.
	const float Full = fileCancelResumeDownloadByteFullSize > 0 ? static_cast<float>(fileCancelResumeDownloadByteFullSize) : 1.0f;
	measureSpeed(static_cast<int64>(InBytesReceived));
	reportDownload(Full, static_cast<float>(fileCancelResumeDownloadByteStart + static_cast<int64>(InBytesReceived)));
}

void UCorvaneRequestCompleteObject::endUnwantedBody(const FHttpRequestPtr& InRequest, uint64 InBytesReceived)
{
	const bool bIsProbe = fileCancelResumeDownloadByteFullSize <= 0;
	const bool bBeyondStep = InBytesReceived > static_cast<uint64>(fileCancelResumeDownloadBytePartSize);
	if (bIsProbe && bBeyondStep && statusCode != 206 && !bProbeGotBody)
	{
		bProbeGotBody = true; // memory stays bounded, and the completion knows why the exchange failed
		CorvaneDelivery::cancel(InRequest);
	}
}

void UCorvaneRequestCompleteObject::reportDownload(float InTotal, float InReceived)
{
	constexpr float mebibytesPerByte = CorvaneDownloadProgress::mebibytesPerByte;
	const float Size = InTotal * mebibytesPerByte;
	const float Received = InReceived * mebibytesPerByte;
	const float Percent = InReceived / InTotal * 100;
	CorvaneDelivery::progress(corvaneBPLibrary, progressMail,
		[Size, Received, Percent, Speed = megabitSpeed, ID = requestID](const UCorvaneBPLibrary& Library)
		{ Library.onhttpFileDownloadDelegate.Broadcast(Size, Received, Percent, Speed, ID); });
}

void UCorvaneRequestCompleteObject::measureSpeed(int64 InBytes)
{
	const int64 Now = FDateTime::UtcNow().GetTicks(); // local time jumps twice a year
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
