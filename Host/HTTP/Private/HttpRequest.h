#pragma once

#include "HttpResponse.h"
#include "Interfaces/IHttpRequest.h"
#include "Outgoing.h"
#include "RequestHeaders.h"

#include <atomic>
#include <memory>
#include <mutex>

class FTransfer;

/**
 * One request. The program sets it up; ProcessRequest checks it and hands it to the HTTP thread, which holds it until
 * its completion ran.
 */
class FHttpRequest final : public IHttpRequest, public std::enable_shared_from_this<FHttpRequest>
{
public:
	FString GetHeader(const FString& HeaderName) const override { return Headers.Get(HeaderName); }
	TArray<FString> GetAllHeaders() const override { return Headers.GetAll(); }
	uint64 GetContentLength() const override { return ContentLength; }
	const TArray<uint8>& GetContent() const override { return Content; }

	void SetVerb(const FString& InVerb) override { Verb = InVerb; }
	void SetURL(const FString& InURL) override { Url = InURL; }
	void SetHeader(const FString& HeaderName, const FString& HeaderValue) override { Headers.Set(HeaderName, HeaderValue); }
	void SetContent(TArray<uint8>&& ContentPayload) override { SetBody(FRequestBody::FromBytes(std::move(ContentPayload))); }
	void SetContentAsString(const FString& ContentString) override;
	bool SetContentAsStreamedFile(const FString& Filename) override;
	void SetDelegateThreadPolicy(EHttpRequestDelegateThreadPolicy InPolicy) override { Policy = InPolicy; }
	FHttpRequestCompleteDelegate& OnProcessRequestComplete() override { return CompleteDelegate; }
	FHttpRequestProgressDelegate64& OnRequestProgress64() override { return ProgressDelegate; }
	bool ProcessRequest() override;
	void CancelRequest() override;
	const FHttpResponsePtr GetResponse() const override;

	bool WantsGameThread() const { return Policy == EHttpRequestDelegateThreadPolicy::CompleteOnGameThread; }
	bool WantsProgress() const { return ProgressDelegate.IsBound(); }

	/** Shows the response to the program. Thread: HTTP thread. */
	void PublishResponse(TSharedPtr<FHttpResponse> InResponse);

	/** Notes the latest counts. @return whether a call of RunProgress has to be arranged. Thread: HTTP thread. */
	bool NoteProgress(uint64 Sent, uint64 Received);
	/** Runs the progress callback with the counts noted last. Thread: where the request's callbacks run. */
	void RunProgress();
	/** Runs the completion callback and lets go of both delegates. Thread: where the request's callbacks run. */
	void RunComplete(FHttpResponsePtr Shown, bool bSucceeded);

	// HTTP thread only:
	std::optional<FOutgoing> Outgoing; // nothing when the request was refused; goes to the transfer
	FTransfer* RunningTransfer = nullptr; // while it runs
	bool bEnded = false;

private:
	std::optional<FOutgoing> Prepare();
	void SetBody(std::shared_ptr<FRequestBody> InBody);
	/** Carries out the one exception to the rule for header values. @return whether this request makes use of it. */
	bool MoveHeaderTextToBody();
	FHttpRequestPtr Self();

	FString Verb = TEXT("GET");
	FString Url;
	FRequestHeaders Headers;
	TArray<uint8> Content;
	std::shared_ptr<FRequestBody> Body; // until the request is started
	uint64 ContentLength = 0;
	EHttpRequestDelegateThreadPolicy Policy = EHttpRequestDelegateThreadPolicy::CompleteOnGameThread;
	FHttpRequestCompleteDelegate CompleteDelegate;
	FHttpRequestProgressDelegate64 ProgressDelegate;
	std::atomic<bool> bStarted = false;

	mutable std::mutex Mutex; // guards what follows
	FHttpResponsePtr Response;
	uint64 BytesSent = 0;
	uint64 BytesReceived = 0;
	bool bProgressArranged = false;
};
