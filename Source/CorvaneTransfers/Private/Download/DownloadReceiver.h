#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "Download/DownloadAnswer.h"
#include "Download/DownloadFiles.h"
#include "Download/DownloadMachine.h"
#include "Download/DownloadQuestion.h"
#include "Download/TailCheck.h"
#include "Pace/SharedPace.h"
#include "Templates/Function.h"

#include <atomic>

/** Brings the answer of one try to the part file. Thread: that of the exchange's callbacks. */
class FCorvaneDownloadReceiver : public FCorvaneExchangeReceiver
{
public:
	/** What a try is made with. */
	struct FPlan
	{
		FCorvaneDownloadQuestion Question;
		/** Of whatever is asked, without user and password. */
		FString Address;
		/** The last bytes on disk, as many as the question compares. */
		TArray<uint8> Tail;
		int64 BytesPerSecond = 0;
		/** Of a limit that it shares with others; null = none. */
		TSharedPtr<FCorvanePaceShare> Share;
	};
	/** Told on a background thread, when the last byte is in the file; Random and NowUtc are still to be filled in. */
	using FTell = TUniqueFunction<void(FCorvaneAttemptEnd&&)>;

	FCorvaneDownloadReceiver(FPlan&& InPlan, const TSharedRef<FCorvaneDownloadFiles>& InFiles, FTell InTell);

	/** @return what an exchange should keep of the answer. */
	static TArray<FString> HeadersOfInterest();

	virtual bool OnAnswer(const FCorvaneAnswer& Answer) override;
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

	/** @return bytes of the whole file, as the answer told; -1 = not yet, or unknown. Thread: any. */
	int64 ToldTotal() const { return Total; }
	/** @return bytes for the file that came so far, on disk or on their way there. Thread: any. */
	int64 BroughtBytes() const { return Brought; }
	/** @return whether the server has said that it would send what is still missing as a part. Thread: any. */
	bool CanGoOnBehind() const { return bCanGoOnBehind; }

private:
	bool TakeBody(const uint8* Bytes, int64 Number);
	void KeepPace(int64 Number);

	const FPlan Plan;
	const TSharedRef<FCorvaneDownloadFiles> Files;
	FTell Tell;
	FCorvaneTailCheck TailCheck;
	FCorvaneDownloadJudgement Judged;
	FCorvaneAttemptEnd End;
	bool bTakesBody = false;
	bool bTakesPart = false;
	int64 Seen = 0;
	double BodyBegan = 0;
	std::atomic<int64> Total{-1};
	std::atomic<int64> Brought{0};
	std::atomic<bool> bCanGoOnBehind{false};
};
