#pragma once

#include "Containers/Queue.h"
#include "CorvaneBPLibrary.h"
#include "HAL/Runnable.h"

#include <atomic>

class FCorvUploadFiles;
class FEvent;
class FRunnableThread;

/**
 * The repair: it undoes, one after another, what stream multipart uploads did to files. Each record waits for a grace
 * period first, so that the HTTP layer has closed the file. Owned by the library. Deleting it carries out what is queued
 * at once and then ends the thread.
 */
class FCorvTruncateUploadedFileThread : public FRunnable
{
public:
	/** Starts the thread. @param files  outlives this object; it is told of every repair that is over. */
	explicit FCorvTruncateUploadedFileThread(FCorvUploadFiles& files, double gracePeriodSeconds);
	virtual ~FCorvTruncateUploadedFileThread() override;

	/**
	 * Queues the repair that a record may need, and wakes the thread. Without a thread it is done at once, here.
	 * @param record  without a completion object. Thread: any.
	 */
	void addRequest(FhttpRequest record);
	/** False when every record was dealt with. Thread: any. */
	bool hasWork() const { return recordsLeft > 0; }

	virtual uint32 Run() override;
	virtual void Stop() override;

private:
	void repairQueued();
	void repair(const FhttpRequest& record);

	FCorvUploadFiles& uploadFiles;
	const uint32 graceMilliseconds;
	TQueue<FhttpRequest, EQueueMode::Mpsc> requestQueue;
	std::atomic<int32> recordsLeft{0};
	std::atomic<bool> isStopping{false};
	FEvent* wakeUp; // from the engine's pool, like the next
	FEvent* stopRequested; // ends a grace period, which a new record must not do
	FRunnableThread* thread = nullptr; // owned
};
