#include "Uploads/UploadProgress.h"

#include "Runs/Run.h"

namespace CorvaneUploadProgress
{
	static bool asksForBody(int32 Code, const FhttpRequest& Record)
	{
		switch (Code)
		{
		case 301:
		case 302:
			return Record.requestType != EHTTPCorvRequestType::POST_UPLOAD && Record.verb != TEXT("POST"); // which becomes a GET
		case 307:
		case 308:
			return true;
		default:
			return false;
		}
	}
} // namespace CorvaneUploadProgress

void FCorvUploadProgress::report(uint64 InBytesSent)
{
	uploadSent = FMath::Max(uploadSent, InBytesSent); // the body and the layer tell of it, perhaps on two threads
	// Not the request's own length: the layer forgets that of a stream before the last progress.
	const float Known = static_cast<float>(uploadSize);
	const float Total = Known > 0 ? Known : 1.0f;
	const float Percent = static_cast<float>(uploadSent) / Total * 100;
	const int32 Sent = static_cast<int32>(FMath::Min<uint64>(uploadSent, MAX_int32)); // the event's pin has no more room
	run.report([Total, Sent, Percent, ID = run.requestID](const UCorvaneBPLibrary& Library)
		{ Library.onhttpFileUploadDelegate.Broadcast(Total, Sent, Percent, ID); });
}

void FCorvUploadProgress::tellIfSentOn(int32 InStatusCode) const
{
	if (uploadSize > 0 && CorvaneUploadProgress::asksForBody(InStatusCode, run.httpRequest))
	{
		UE_LOG(LogTemp, Warning,
			TEXT(
				"UCorvaneBPLibrary: The server sent the upload on to another address (%d), but a body is sent once only. Name the final address. %s"),
			InStatusCode, *run.requestID);
	}
}
