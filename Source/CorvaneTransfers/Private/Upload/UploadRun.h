#pragma once

#include "Attempts/Exchange.h"
#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "CorvaneUploadOptions.h"
#include "Files/FileHash.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Mailbox.h"
#include "Threads/Strand.h"
#include "TransferRun.h"
#include "Upload/UploadContent.h"
#include "Upload/UploadMachine.h"

/**
 * An upload from its start to its report: does what the machine says, and tells it what came of it. It is held by the list of
 * running transfers until it is over. Thread: game thread.
 */
class FCorvaneUploadRun : public FCorvaneTransferRun, public TSharedFromThis<FCorvaneUploadRun>
{
public:
	using FTell = TFunction<void(const FCorvaneTransferReport&)>;

	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 */
	FCorvaneUploadRun(
		const FCorvaneUploadContent& InContent, const FCorvaneUploadOptions& InOptions, FTell InTellEnd, TFunction<void()> InTellProgress);

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
	/** Brings what another thread has to tell to this object. Thread: any. */
	void Post(TUniqueFunction<void(FCorvaneUploadRun&)> Letter);

	void Follow(const FCorvaneUploadStep& Step);
	void Find();
	void Send();
	void Stop();
	void Wait(double Seconds);
	void TellEnd();

	FCorvaneExchangeRequest MakeRequest() const;
	void OnSent(FCorvaneUploadTryEnd End);
	void BeginProgress();
	bool OnProgressTick();

	FCorvaneUploadContent Content;
	const FCorvaneUploadOptions Options;
	const FString Verb;
	FCorvaneHashWish Hash;
	FTell EndTeller;
	TFunction<void()> ProgressTeller;

	FCorvaneUploadMachine Machine;
	const TSharedRef<FCorvaneMailbox> Mailbox = MakeShared<FCorvaneMailbox>();
	const TSharedRef<FCorvaneStrand> Strand = MakeShared<FCorvaneStrand>();
	TSharedPtr<FCorvaneExchange> Exchange; // of the try that runs, as the next
	TSharedPtr<FCorvaneBodyStream> Body;
	FTSTicker::FDelegateHandle WaitTicker;
	FTSTicker::FDelegateHandle ProgressTicker;
	int64 ToldBytes = -1;
	bool bTold = false; // later than the machine is over
};
