#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "MachineRun.h"
#include "Tus/TusFiles.h"
#include "Tus/TusMachine.h"
#include "Tus/TusRequests.h"
#include "Upload/BodyStream.h"

/**
 * A resumable upload from its start to its report: does what the machine says, and tells it what came of it. It is held by the
 * list of running transfers until it is over. Thread: game thread.
 */
class FCorvaneTusRun : public TCorvaneMachineRun<FCorvaneTusRun, FCorvaneTusMachine>
{
public:
	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 */
	FCorvaneTusRun(const FString& InURL, const FString& InPath, const FCorvaneResumableOptions& InOptions, FTell InTellEnd,
		TFunction<void()> InTellProgress);

	virtual void Start() override;
	virtual void Cancel() override;
	virtual void EndWithProgram() override;

	virtual void Abandon() override {}

private:
	friend class TCorvaneMachineRun<FCorvaneTusRun, FCorvaneTusMachine>;

	virtual int64 BytesOfTry() const override;
	virtual void LogEnd(const FCorvaneTransferReport& Report) const override;

	void Follow(const FCorvaneTusStep& Step);
	void Open();
	void Begin();
	void SendInTurn(const FCorvaneTusStep& Step);
	void SendBytes(const FCorvaneTusStep& Step);
	void SendSummed(const FCorvaneTusStep& Step, const FString& Sum);
	void SendBody(FCorvaneExchangeRequest Asked, const FCorvaneTusStep& Step);
	void Send(const FCorvaneExchangeRequest& Asked, const TSharedPtr<FCorvaneBodyStream>& Body);
	void Stop();
	void PostClosed();

	void OnFound(const FCorvaneTusFound& Found);
	void OnSent(FCorvaneTusEnd End);

	const FString URL;
	const FString Path;
	const FCorvaneResumableOptions Options;

	const FCorvaneTusRequests Requests;
	const TSharedRef<FCorvaneTusFiles> Files = MakeShared<FCorvaneTusFiles>();
	FCorvaneSentFile File;
	FCorvaneTusFileFacts Facts;
	TSharedPtr<FCorvaneExchange> Exchange; // that runs
	TSharedPtr<FCorvaneBodyStream> Stream; // its body
	bool bStopWanted = false; // before there was an exchange to stop
	int64 NotedOffset = 0;
};
