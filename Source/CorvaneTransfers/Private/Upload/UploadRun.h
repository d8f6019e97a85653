#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneUploadOptions.h"
#include "Files/FileHash.h"
#include "MachineRun.h"
#include "Threads/Strand.h"
#include "Upload/UploadContent.h"
#include "Upload/UploadMachine.h"

/**
 * An upload from its start to its report: does what the machine says, and tells it what came of it. It is held by the list of
 * running transfers until it is over. Thread: game thread.
 */
class FCorvaneUploadRun : public TCorvaneMachineRun<FCorvaneUploadRun, FCorvaneUploadMachine>
{
public:
	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 */
	FCorvaneUploadRun(
		const FCorvaneUploadContent& InContent, const FCorvaneUploadOptions& InOptions, FTell InTellEnd, TFunction<void()> InTellProgress);

	virtual void Start() override;

	virtual void Abandon() override {}

private:
	friend class TCorvaneMachineRun<FCorvaneUploadRun, FCorvaneUploadMachine>;

	virtual int64 BytesOfTry() const override;
	virtual void LogEnd(const FCorvaneTransferReport& Report) const override;

	void Follow(const FCorvaneUploadStep& Step);
	void Find();
	void SendInTurn();
	void Send();
	void Stop();

	FCorvaneExchangeRequest MakeRequest() const;
	void OnSent(FCorvaneUploadTryEnd End);

	FCorvaneUploadContent Content;
	const FCorvaneUploadOptions Options;
	const FString Verb;
	FCorvaneHashWish Hash;

	const TSharedRef<FCorvaneStrand> Strand = MakeShared<FCorvaneStrand>();
	TSharedPtr<FCorvaneExchange> Exchange; // of the try that runs, as the next
	TSharedPtr<FCorvaneBodyStream> Body;
	bool bStopWanted = false; // before there was an exchange to stop
};
