#pragma once

#include "Containers/Queue.h"
#include "CorvaneBPLibrary.h"
#include "HAL/Runnable.h"

#include <atomic>

class FEvent;
class FRunnableThread;

/** One byte array on its way to a file. */
struct FByteToFileJob
{
	TArray<uint8> byteData;
	EHTTPCorvFileUpload directoryType = EHTTPCorvFileUpload::E_gd;
	FString filePath;
	EHTTPCorvFileBytesToFileActionType fileAction = EHTTPCorvFileBytesToFileActionType::E_OVERWRITE;
};

/**
 * The writer: it carries out file jobs one after another, away from the game thread. Owned by the library. Deleting it
 * finishes the queued jobs first.
 */
class FByteToFileThread : public FRunnable
{
public:
	FByteToFileThread();
	virtual ~FByteToFileThread() override;

	/** Queues a job and wakes the writer; failures are logged by the writer. Thread: any. */
	void addJob(FByteToFileJob job);
	/** False when every job was carried out. Thread: any. */
	bool hasWork() const { return jobsLeft > 0; }

	virtual uint32 Run() override;
	virtual void Stop() override;

private:
	void startThread();
	static void write(const FByteToFileJob& job);

	TQueue<FByteToFileJob, EQueueMode::Mpsc> jobQueue;
	std::atomic<int32> jobsLeft{0};
	std::atomic<bool> isStopping{false};
	FEvent* wakeUp; // from the engine's pool
	FRunnableThread* thread = nullptr; // owned
};
