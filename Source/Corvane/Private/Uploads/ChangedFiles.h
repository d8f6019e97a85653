#pragma once

#include "CorvaneBPLibrary.h"
#include "HAL/CriticalSection.h"

/**
 * The files that uploads have changed on disk: those whose upload runs, and those that wait for their repair. Nobody may
 * upload such a file a second time, for its end is not the user's. Paths are spelled as on disk, and of running uploads
 * told apart by case, for two of them may name two files; what waits for its repair is asked for in any case. Thread: any.
 */
class FCorvChangedFiles
{
public:
	/** An upload is about to change the file that its record names. */
	void begin(FhttpRequest record);
	/** The upload was given up, and its file is as before. */
	void forget(const FString& path);
	/** The upload of a file has ended, if it had begun: the file waits for its repair from now on. */
	void waitForRepair(const FString& path);
	/** One of the repairs that a file waits for is over. */
	void endRepair(const FString& path);

	bool isWaitingForRepair(const FString& path) const;
	/** Whether its upload runs or its repair is still to come. */
	bool isChanged(const FString& path) const;
	/** All of these. */
	TArray<FString> paths() const;
	/** The records of uploads that have not ended. */
	TArray<FhttpRequest> unfinished() const;

private:
	int32 indexOfRunning(const FString& path) const CORVANE_REQUIRES(lock);
	void removeRunning(const FString& path) CORVANE_REQUIRES(lock);

	mutable FCriticalSection lock;
	TArray<FhttpRequest> running CORVANE_GUARDED_BY(lock); // the records hold no completion object
	TArray<FString> blockedFiles CORVANE_GUARDED_BY(lock); // a path once for each of its repairs
};
