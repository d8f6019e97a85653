#pragma once

#include "CorvaneBPLibrary.h"
#include "Threads/QueueThread.h"

/** One byte array on its way to a file. */
struct FByteToFileJob
{
	TArray<uint8> byteData;
	EHTTPCorvFileUpload directoryType = EHTTPCorvFileUpload::E_gd;
	FString filePath;
	EHTTPCorvFileBytesToFileActionType fileAction = EHTTPCorvFileBytesToFileActionType::E_OVERWRITE;
};

/**
 * The writer: it carries out file jobs one after another, away from the game thread; failures are logged. Shared by the
 * library and whoever brings a job; whoever lets go last finishes the queued jobs.
 */
class FByteToFileThread : public TCorvQueueThread<FByteToFileJob>
{
public:
	FByteToFileThread();
	virtual ~FByteToFileThread() override;

protected:
	virtual void work(FByteToFileJob& job) override;
};
