#pragma once

#include "Attempts/Answer.h"
#include "Attempts/RequestBody.h"
#include "CoreMinimal.h"
#include "Corvane.h"
#include "CorvaneTransfers.h"
#include "HAL/CriticalSection.h"
#include "Interfaces/IHttpRequest.h"

/** How one exchange with a server ended. */
enum class ECorvaneExchangeEnd : uint8
{
	/** The answer came in whole, whatever its code. */
	Done,
	/** The HTTP module did not take the request: it would not take it the next time either. */
	NotSent,
	/** There was no way to the server. */
	NoConnection,
	/** The limit for the whole request, which only the project's settings can set, has passed. */
	TimedOut,
	/** The server was silent for longer than the limit. */
	Stalled,
	/** The connection broke off, or the body was shorter than told. */
	Dropped,
	/** Cancel was called, or the HTTP module is going down. */
	Cancelled,
	/** The receiver said that it wants no more. */
	StoppedByUs
};

/** What is asked. */
struct FCorvaneExchangeRequest
{
	FString Verb = TEXT("GET");
	FString URL;
	TMap<FString, FString> Headers;
	/** Empty = none. One that is not needs a Content-Type among the headers. */
	FString Body;
	/** Sent in the place of Body; null = Body is. It needs a Content-Type, too. An exchange that needs its bytes twice, as after a redirect, fails. */
	TSharedPtr<FCorvaneRequestBody> Stream;
	/** Names of headers that the answer is to keep. */
	TArray<FString> HeadersToKeep;
	/** Seconds without a byte after which the exchange ends. */
	float SilenceSeconds = 30;
};

/** What an exchange brought. */
struct FCorvaneExchangeResult
{
	ECorvaneExchangeEnd End = ECorvaneExchangeEnd::Cancelled;
	FCorvaneAnswer Answer;
	/** The lines of the answer came in whole; else Answer holds what came of them. */
	bool bAnswerIsWhole = false;
	/** Of the body, that came in. */
	int64 BodyBytes = 0;
	/** Of the request's Stream, that the HTTP module has taken: those may have reached the server, whatever the end. */
	int64 SentBytes = 0;
	/** Where redirects led, with the user and password that the address may have; empty when there was no answer. */
	FString ReachedURL;
	/** Other than Running: what came tells that there is nothing to be had, and why. Exchanges by themselves never know. */
	ECorvaneTransferOutcome Failure = ECorvaneTransferOutcome::Running;
	/** With a failure, for people. */
	FString Sentence;
};

/**
 * Takes what one exchange brings. The calls come in this order, never overlap, and hold all other exchanges up as long as
 * they take. Thread: HTTP thread; where the engine calls back on the game thread, OnEnd comes there.
 */
class FCorvaneExchangeReceiver
{
public:
	virtual ~FCorvaneExchangeReceiver() = default;
	/** All header lines are there; at most once, and never without OnEnd after it. @return false to stop. */
	virtual bool OnAnswer(const FCorvaneAnswer& Answer) = 0;
	/** Bytes of the body, those of an error's page too. @return false to stop. */
	virtual bool OnBytes(const uint8* Bytes, int64 Number) = 0;
	/** Exactly once. */
	virtual void OnEnd(const FCorvaneExchangeResult& Result) = 0;
};

/**
 * One request and its answer, as a stream. Redirects are followed on the way and not shown. It asks for no encoding but
 * "identity".
 */
class FCorvaneExchange
{
public:
	/**
	 * Sends a request. Nothing is called back inside this call, but where the engine calls back on the game thread and does
	 * not take the request. Thread: any.
	 * @param InReceiver  is held until OnEnd was called.
	 */
	static TSharedRef<FCorvaneExchange> Start(const FCorvaneExchangeRequest& Asked, const TSharedRef<FCorvaneExchangeReceiver>& InReceiver);

	/** Ends it soon, through OnEnd; bytes may come before. Harmless when it is over. Thread: any. */
	void Cancel();

	explicit FCorvaneExchange(const TSharedRef<FCorvaneExchangeReceiver>& InReceiver); // for MakeShared: use Start

private:
	static void Bind(const TSharedRef<FCorvaneExchange>& Self, IHttpRequest& OutRequest);
	static void Fill(const FCorvaneExchangeRequest& Asked, IHttpRequest& OutRequest);
	void Send(const FHttpRequestRef& InRequest, float InSilenceSeconds);
	void TakeBytes(void* Bytes, int64& InOutNumber);
	bool TellAnswer();
	void Complete(const FHttpRequestPtr& Done, const FHttpResponsePtr& Response, bool bSucceeded);
	ECorvaneExchangeEnd Judge(EHttpFailureReason Reason, bool bSucceeded) const CORVANE_REQUIRES(Guard);
	bool MayBeCutInItsLines() const;
	ECorvaneExchangeEnd JudgeConnectionError() const CORVANE_REQUIRES(Guard);

	const TSharedRef<FCorvaneExchangeReceiver> Receiver;
	bool bAsksForBody = false;
	TSharedPtr<FCorvaneRequestBody> Sent; // null = what is sent is no stream
	FCriticalSection Guard;
	FHttpRequestPtr Request CORVANE_GUARDED_BY(Guard); // null once it is over
	double StartedAt CORVANE_GUARDED_BY(Guard) = 0;
	float SilenceSeconds CORVANE_GUARDED_BY(Guard) = 0;
	bool bSent CORVANE_GUARDED_BY(Guard) = false; // so that a refusal which is told inside ProcessRequest is known for one
	// On the threads of the callbacks, which come one after the other:
	FCorvaneAnswerReader Reader;
	int64 BodyBytes = 0;
	bool bToldAnswer = false;
	bool bStopped = false;
};
