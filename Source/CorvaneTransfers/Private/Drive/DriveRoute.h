#pragma once

#include "Attempts/Route.h"

/**
 * The way to a file of the Drive service: where it is asked for may stand a page, whose form leads to the file. The page is
 * asked without ranges; what the form names is remembered for later tries, and looked for anew when it is no more.
 *
 * A try is a chain of exchanges, one at a time, each begun at the end of the one before. Cookies of a page, and what tells who
 * asks, go no further than to the page's own host. Hold it by a shared pointer. Behind its first exchange the chain runs on the
 * HTTP thread.
 */
class FCorvaneDriveRoute : public FCorvaneRoute, public TSharedFromThis<FCorvaneDriveRoute>
{
public:
	explicit FCorvaneDriveRoute(const FString& InFileID);

	virtual FString FindFault() const override;
	virtual void Start(const FCorvaneExchangeRequest& InAsked, const TSharedRef<FCorvaneExchangeReceiver>& InReceiver) override;

private:
	friend class FCorvaneDriveReceiver;

	/** What is known of where the file is. */
	struct FPlace
	{
		FString Address; // empty = it has to be looked for
		FString Cookies; // that its page has set
		bool bIsOld = false; // found by an earlier try
	};

	void SendNext(const FCorvaneExchangeResult& Before);
	FCorvaneExchangeRequest MakeRequest() const;
	void End(const FCorvaneExchangeResult& Result);
	void Fail(FCorvaneExchangeResult Result, ECorvaneTransferOutcome Failure, const FString& Sentence);

	void OnFileIsHere(const FCorvaneExchangeResult& Result);
	void OnPlaceIsGone(const FCorvaneExchangeResult& Result);
	void OnPage(const FCorvaneExchangeResult& Result, TArray<uint8>&& Bytes);

	const FString FileID;

	// On the threads of the chain, which come one after the other:
	FCorvaneExchangeRequest Asked;
	TSharedPtr<FCorvaneExchangeReceiver> Receiver; // null = no try runs
	FPlace Place;
	int32 Exchanges = 0; // of the try
};
