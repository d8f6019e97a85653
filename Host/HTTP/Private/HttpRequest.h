#pragma once

#include "HttpResponse.h"
#include "Interfaces/IHttpRequest.h"
#include "RequestBody.h"
#include "Url.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

class FTransfer;

/** How a run of a request ended. */
struct FHttpOutcome
{
	EHttpFailureReason Reason = EHttpFailureReason::Other; // None = it succeeded
	int32 Code = 0;
};

/**
 * One request. The program sets it up; ProcessRequest checks it and hands it to the HTTP thread, which holds it until
 * its completion ran. There is no lock: from the start to the completion it belongs to the HTTP thread, but for what the
 * callbacks of the game-thread policy read.
 */
class FHttpRequest final : public IHttpRequest, public std::enable_shared_from_this<FHttpRequest>
{
public:
	const FString& GetEffectiveURL() const override { return EffectiveURL; }
	FString GetHeader(const FString& HeaderName) const override { return Headers.Get(HeaderName); }
	TArray<FString> GetAllHeaders() const override { return Headers.GetAll(); }
	uint64 GetContentLength() const override;
	const TArray<uint8>& GetContent() const override { return Content; }

	void SetVerb(const FString& InVerb) override;
	void SetURL(const FString& InURL) override;
	void SetHeader(const FString& HeaderName, const FString& HeaderValue) override;
	void SetContent(TArray<uint8>&& ContentPayload) override;
	void SetContentAsString(const FString& ContentString) override;
	bool SetContentAsStreamedFile(const FString& Filename) override;
	bool SetContentFromStream(TSharedRef<FArchive, ESPMode::ThreadSafe> Stream) override;
	bool SetResponseBodyReceiveStream(TSharedRef<FArchive> Stream) override;
	bool SetResponseBodyReceiveStreamDelegateV2(FHttpRequestStreamDelegateV2 StreamDelegate) override;
	void SetTimeout(float InTimeoutSecs) override;
	void SetActivityTimeout(float InTimeoutSecs) override;
	void SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy InThreadPolicy) override;
	FHttpRequestCompleteDelegate& OnProcessRequestComplete() override { return CompleteDelegate; }
	FHttpRequestProgressDelegate64& OnRequestProgress64() override { return ProgressDelegate; }
	FHttpRequestStatusCodeReceivedDelegate& OnStatusCodeReceived() override { return StatusDelegate; }
	FHttpRequestHeaderReceivedDelegate& OnHeaderReceived() override { return HeaderDelegate; }
	bool ProcessRequest() override;
	void CancelRequest() override;
	const FHttpResponsePtr GetResponse() const override { return Response; }
	EHttpFailureReason GetFailureReason() const override { return FailureReason; }

	/** Closes the body and brings last progress and completion to the thread of the callbacks. Thread: HTTP thread. */
	void End(FHttpOutcome Outcome);
	/** Completes a run that the HTTP thread never took, through the game thread. Thread: any. */
	void EndWithoutService();

	// HTTP thread, while it runs:
	/** Comes first: whoever starts a request is not kept waiting for it. @return whether the URL may be asked for. */
	bool ParseUrl();
	void BeginResponse();
	void TakeStatus(int32 Code);
	void TakeHeader(FString Name, FString Value);
	void TakeLength(uint64 Length) { Response->SetContentLength(Length); }
	/** @return false when nobody takes the bytes. */
	bool TakeBody(char* Bytes, size_t Number);
	void NoteSent(uint64 Bytes);
	std::optional<double> TimeoutSeconds, ActivityTimeoutSeconds; // none = the service's
	std::string Verb = "GET"; // upper case
	std::optional<FUrl> Url; // from ParseUrl on
	FString EffectiveURL;
	FHeaderMap Headers;
	std::unique_ptr<FRequestBody> Body; // open; null = none
	FTransfer* RunningTransfer = nullptr;
	bool bBytesDropped = false; // after a cancel: whatever comes of the transfer, it is not whole
	bool bEnded = false;
	bool bRefused = false; // before it came to the HTTP thread

private:
	bool MayChange() const;
	/** @return what is wrong with the request, in words; empty when it is ready to be sent. */
	FString Prepare();
	bool OpenBody();
	void DropBody();
	bool PassOn(char* Bytes, size_t Number);
	void ArrangeProgress();
	void RunProgress();
	void Complete(FHttpOutcome Outcome);
	FHttpRequestPtr Self() { return FHttpRequestRef(shared_from_this()); }

	FString UrlText;
	TArray<uint8> Content; // the body is one of these three
	std::optional<FString> ContentFile;
	TSharedPtr<FArchive, ESPMode::ThreadSafe> ContentStream;
	TSharedPtr<FArchive> ResponseStream;
	FHttpRequestStreamDelegateV2 ResponseStreamDelegate;
	EHttpRequestDelegateThreadPolicy Policy = EHttpRequestDelegateThreadPolicy::CompleteOnGameThread;
	FHttpRequestCompleteDelegate CompleteDelegate;
	FHttpRequestProgressDelegate64 ProgressDelegate;
	FHttpRequestStatusCodeReceivedDelegate StatusDelegate;
	FHttpRequestHeaderReceivedDelegate HeaderDelegate;

	std::atomic<bool> bProcessing = false;
	std::atomic<bool> bCancelled = false;
	bool bOnGameThread = false; // where the callbacks of this run belong
	bool bTimedOut = false; // for good
	EHttpFailureReason FailureReason = EHttpFailureReason::None;
	TSharedPtr<FHttpResponse> Response;
	std::atomic<uint64> BytesSent = 0;
	std::atomic<uint64> BytesReceived = 0;
	uint64 ReportedSent = 0; // thread of the callbacks, with the next
	uint64 ReportedReceived = 0;
	std::atomic<bool> bProgressArranged = false;
};
