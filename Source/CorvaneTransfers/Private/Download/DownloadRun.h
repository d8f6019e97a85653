#pragma once

#include "Attempts/Route.h"
#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "Download/DownloadFiles.h"
#include "Download/DownloadMachine.h"
#include "Files/FileHash.h"
#include "MachineRun.h"

class FCorvaneDownloadReceiver;

/**
 * A download from its start to its report: does what the machine says, and tells it what came of it. It is held by the list
 * of running transfers until it is over. Thread: game thread.
 */
class FCorvaneDownloadRun : public TCorvaneMachineRun<FCorvaneDownloadRun, FCorvaneDownloadMachine>
{
public:
	/**
	 * @param InTellEnd  is called once, later than Start.
	 * @param InTellProgress  is called ten times a second at most while bytes move; GetReport tells how it stands.
	 * @param InRoute  how InURL leads to the file.
	 */
	FCorvaneDownloadRun(const FString& InURL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions, FTell InTellEnd,
		TFunction<void()> InTellProgress, const TSharedRef<FCorvaneRoute>& InRoute = MakeShared<FCorvaneStraightRoute>());

	virtual void Start() override;
	/** @return how it stands, with the bytes of the try that runs. */
	virtual FCorvaneTransferReport GetReport() const override;

	/** What runs without an end goes on in parts, unless the server may send none: then what came would be lost, and it is held up only. */
	virtual void OnPaceChanged() override;

	virtual void Abandon() override { Files->Abandon(); }

private:
	friend class TCorvaneMachineRun<FCorvaneDownloadRun, FCorvaneDownloadMachine>;

	virtual int64 BytesOfTry() const override;
	virtual void LogEnd(const FCorvaneTransferReport& Report) const override;

	void Follow(const FCorvaneDownloadStep& Step);
	void Look();
	void LookForRest();
	void Open(const FCorvaneDownloadStep& Step);
	void OnOpened(const FCorvaneDownloadOpened& Opened);
	void Ask(const FCorvaneDownloadQuestion& Question);
	void CompareAndSend(const FCorvaneDownloadQuestion& Question);
	void Send(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead);
	TSharedRef<FCorvaneDownloadReceiver> MakeReceiver(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail);
	void Launch(const FCorvaneDownloadQuestion& Question, const TSharedRef<FCorvaneDownloadReceiver>& Taker) const;
	void Stop();
	void Finish();
	FCorvaneFinishWish MakeWish(const FCorvaneVersion& Version) const;
	void PostClosed(int64 KeptBytes);

	void OnTried(const FCorvaneDownloadQuestion& Question, FCorvaneAttemptEnd&& End);
	void OnSent(FCorvaneAttemptEnd&& End);

	const FString URL;
	const FString& Target = Machine.GetTarget();
	const FCorvaneDownloadOptions& Options = Machine.GetOptions();
	FCorvaneHashWish Hash;

	const TSharedRef<FCorvaneDownloadFiles> Files = MakeShared<FCorvaneDownloadFiles>();
	const TSharedRef<FCorvaneRoute> Route;
	TSharedPtr<FCorvaneDownloadReceiver> Receiver; // of the try that runs, or begins if the part file is new
};
