#pragma once

#include "Attempts/Route.h"
#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "CorvaneTransferReport.h"
#include "Download/DownloadFiles.h"
#include "Download/DownloadMachine.h"
#include "Files/FileHash.h"
#include "Pace/SharedPace.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Mailbox.h"
#include "TransferRun.h"

class FCorvaneDownloadReceiver;

/**
 * A download from its start to its report: does what the machine says, and tells it what came of it. It is held by the list
 * of running transfers until it is over. Thread: game thread.
 */
class FCorvaneDownloadRun : public FCorvaneTransferRun, public TSharedFromThis<FCorvaneDownloadRun>
{
public:
	using FTell = TFunction<void(const FCorvaneTransferReport&)>;

	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 * @param InRoute  how InURL leads to the file.
	 */
	FCorvaneDownloadRun(const FString& InURL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions, FTell InTellEnd,
		TFunction<void()> InTellProgress, const TSharedRef<FCorvaneRoute>& InRoute = MakeShared<FCorvaneStraightRoute>());

	virtual void SharePace(const TSharedRef<FCorvaneSharedPace>& InPace) override { Pace = InPace; }
	virtual void Start() override;
	virtual void Pause() override;
	virtual void Continue() override;
	virtual void Cancel() override;
	virtual bool IsPaused() const override { return Machine.IsPaused(); }
	/** @return how it stands, with the bytes of the try that runs. */
	virtual FCorvaneTransferReport GetReport() const override;

	virtual void EndWithProgram() override;
	virtual bool IsOver() const override { return bTold; }
	virtual void Abandon() override { Files->Abandon(); }
	virtual FCorvaneMailbox& GetMailbox() override { return *Mailbox; }

private:
	/** Brings what another thread has to tell to this object, if it is not over. Thread: any. */
	void Post(TUniqueFunction<void(FCorvaneDownloadRun&)> Letter);

	void Follow(const FCorvaneDownloadStep& Step);
	void Look();
	void Open();
	void Ask(const FCorvaneDownloadQuestion& Question);
	void BeginTry(const FCorvaneDownloadQuestion& Question);
	void Send(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead);
	void Stop();
	void Wait(double Seconds);
	void Finish();
	void TellEnd();
	void PostClosed();

	void OnSent(FCorvaneAttemptEnd End);
	bool OnProgressTick();

	const FString URL;
	const FString Target;
	const FCorvaneDownloadOptions Options;
	FCorvaneHashWish Hash;
	FTell EndTeller;
	TFunction<void()> ProgressTeller;

	FCorvaneDownloadMachine Machine;
	const TSharedRef<FCorvaneMailbox> Mailbox = MakeShared<FCorvaneMailbox>();
	const TSharedRef<FCorvaneDownloadFiles> Files = MakeShared<FCorvaneDownloadFiles>();
	const TSharedRef<FCorvaneRoute> Route;
	TSharedPtr<FCorvaneSharedPace> Pace; // null = it has none to keep
	int64 PaceNumber = 0; // with which it waits for its share
	TSharedPtr<FCorvanePaceShare> Share; // of the try that runs
	double TryBegan = 0;
	TSharedPtr<FCorvaneDownloadReceiver> Receiver; // of the try that runs
	bool bStopWanted = false; // before there was a try to stop
	FTSTicker::FDelegateHandle WaitTicker;
	FTSTicker::FDelegateHandle ProgressTicker;
	int64 ToldBytes = -1;
	bool bTold = false; // later than the machine is over
};
