#pragma once

#include "CorvaneBPLibrary.h"
#include "Threads/QueueThread.h"

class FCorvChangedFiles;

/**
 * The repair: it undoes, one after another, what stream multipart uploads did to files. Each record waits for a grace
 * period first. Shared by the library and whoever brings a record; whoever lets go last carries out what is queued.
 */
class FCorvTruncateUploadedFileThread : public TCorvQueueThread<FhttpRequest>
{
public:
	/** @param files  outlives this object; it is told of every repair that is over. */
	FCorvTruncateUploadedFileThread(FCorvChangedFiles& files, double gracePeriodSeconds);
	virtual ~FCorvTruncateUploadedFileThread() override;

	/** Queues the repair that a record may need. @param record  without a completion object. Thread: any. */
	void addRequest(FhttpRequest record);

protected:
	virtual void work(FhttpRequest& record) override;

private:
	FCorvChangedFiles& changedFiles;
};
