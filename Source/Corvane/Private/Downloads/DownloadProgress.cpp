#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"
#include "Misc/DateTime.h"
#include "Rules/DownloadRules.h"

namespace CorvaneDownloadProgress
{
	constexpr float mebibytesPerByte = 9.536743e-7f;
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
	endUnwantedBody(*InRequest, InBytesReceived);
	// Over the whole file, not over this step.
	const float Full = fileCancelResumeDownloadByteFullSize > 0 ? static_cast<float>(fileCancelResumeDownloadByteFullSize) : 1.0f;
	const int64 Received = fileCancelResumeDownloadByteStart + static_cast<int64>(InBytesReceived);
	measureSpeed(Received);
	reportDownload(Full, static_cast<float>(Received));
}

void UCorvaneRequestCompleteObject::endUnwantedBody(IHttpRequest& InRequest, uint64 InBytesReceived)
{
	const int64 Most = CorvaneRules::mostStepBytes(
		fileCancelResumeDownloadByteStart, fileCancelResumeDownloadBytePartSize, fileCancelResumeDownloadByteFullSize);
	if (!bTooMuchCame && static_cast<int64>(InBytesReceived) > Most)
	{
		bTooMuchCame = true; // memory stays bounded, and the completion knows why the exchange failed
		InRequest.CancelRequest(); // from here: the game thread may stand still for long enough to fill the memory
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
	CorvaneRules::measureSpeed(Now, InBytes, lastProgressTime, lastProgressBytes, megabitSpeed);
}
