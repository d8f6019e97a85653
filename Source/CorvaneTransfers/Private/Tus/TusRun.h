#pragma once

#include "Attempts/Exchange.h"
#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "CorvaneTransferReport.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Mailbox.h"
#include "TransferRun.h"
#include "Tus/TusFiles.h"
#include "Tus/TusMachine.h"
#include "Tus/TusOptions.h"
#include "Tus/TusRequests.h"
#include "Upload/BodyStream.h"

/**
 * A resumable upload from its start to its report: does what the machine says, and tells it what came of it. It is held by the
 * list of running transfers until it is over. Thread: game thread.
 */
class FCorvaneTusRun : public FCorvaneTransferRun, public TSharedFromThis<FCorvaneTusRun>
{
public:
	using FTell = TFunction<void(const FCorvaneTransferReport&)>;

	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 */
	FCorvaneTusRun(const FString& InURL, const FString& InPath, const FCorvaneResumableOptions& InOptions, FTell InTellEnd,
		TFunction<void()> InTellProgress);

	virtual void Start() override;
	virtual void Pause() override;
	virtual void Continue() override;
	virtual void Cancel() override;
	virtual bool IsPaused() const override { return Machine.IsPaused(); }
	virtual FCorvaneTransferReport GetReport() const override;

	virtual void EndWithProgram() override;
	virtual bool IsOver() const override { return bTold; }
	virtual void Abandon() override {}
	virtual FCorvaneMailbox& GetMailbox() override { return *Mailbox; }

private:
	/** Brings what another thread has to tell to this object, if it is not over. Thread: any. */
	void Post(TUniqueFunction<void(FCorvaneTusRun&)> Letter);

	void Follow(const FCorvaneTusStep& Step);
	void Open();
	void Begin();
	void SendBytes(const FCorvaneTusStep& Step);
	void SendSummed(const FCorvaneTusStep& Step, const FString& Sum);
	void SendBody(FCorvaneExchangeRequest Asked, const FCorvaneTusStep& Step);
	void Send(const FCorvaneExchangeRequest& Asked, const TSharedPtr<FCorvaneBodyStream>& Body);
	void Stop();
	void Wait(double Seconds);
	void TellEnd();
	void PostClosed();

	void OnFound(const FCorvaneTusFound& Found);
	void OnSent(FCorvaneTusEnd End);
	bool OnProgressTick();

	const FString URL;
	const FString Path;
	const FCorvaneResumableOptions Options;
	const FCorvaneTusWishes Wishes;
	FTell EndTeller;
	TFunction<void()> ProgressTeller;

	FCorvaneTusMachine Machine;
	const FCorvaneTusRequests Requests;
	const TSharedRef<FCorvaneMailbox> Mailbox = MakeShared<FCorvaneMailbox>();
	const TSharedRef<FCorvaneTusFiles> Files = MakeShared<FCorvaneTusFiles>();
	FCorvaneSentFile File;
	FCorvaneTusFileFacts Facts;
	TSharedPtr<FCorvaneExchange> Exchange; // that runs
	TSharedPtr<FCorvaneBodyStream> Stream; // its body
	bool bStopWanted = false; // before there was an exchange to stop
	int64 NotedOffset = 0;
	FTSTicker::FDelegateHandle WaitTicker;
	FTSTicker::FDelegateHandle ProgressTicker;
	int64 ToldBytes = -1;
	bool bTold = false; // later than the machine is over
};
