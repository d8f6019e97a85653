#pragma once

#include "CorvaneBPLibrary.h"
#include "HAL/CriticalSection.h"
#include "Runs/Delivery.h"
#include "Runs/EventBody.h"
#include "Templates/UniquePtr.h"

#include <atomic>

class FCorvThread;
struct FCorvCancelState;
struct FCorvTheadJob;

/**
 * The way of a record from its start to its result: its worker, who waits for the result, whether a script has asked to
 * cancel it, and what its answer has told so far. A record may be started again when its result is out; all of this is of
 * its latest run. The functions of workers serve what becomes of the answer and know nothing of it.
 */
class FCorvRun
{
public:
	/** @param owner  receives the jobs; it owns this. */
	explicit FCorvRun(UCorvaneRequestCompleteObject& owner);
	~FCorvRun();

	// Game thread, before the start.
	FString requestID;
	FhttpRequest httpRequest; // holds no completion object
	void setLibrary(UCorvaneBPLibrary* library);
	/** @return null when there was no library when the request was built, and when it is gone. */
	UCorvaneBPLibrary* getLibrary() const { return libraryHandle.Get(); }
	/** Makes this a later step of a request that a library has begun, and for which a node may wait. */
	void continueFor(UCorvaneBPLibrary& library, TWeakObjectPtr<UAsyncNodeCorv> node);

	// Game thread.
	/** @return false when the library is gone, which the log tells, or the run before has not ended; nothing has changed then. */
	bool begin();
	/** The body of this run's answer comes in pieces, as server-sent events. */
	void collectEvents();
	/** Names the engine request that this run is about to start. */
	void setRequest(FHttpRequestPtr request);
	/** Ends the worker after the job it is in. So ends a run whose request will not be started. */
	void stopJobs();
	/** As stopJobs, and waits for the end. */
	void stopWorker();
	/** Ends and frees the worker. */
	void freeWorker();

	// HTTP callback.
	/** Hands a job to the worker, if there is one. */
	void addJob(TUniquePtr<FCorvTheadJob> job);
	/** Keeps the code, which the response of a broken exchange may never tell. */
	void setStatusCode(int32 code);
	/** Keeps the length of the body. */
	void setHeader(const FString& name, const FString& value);
	/** @return whether so many bytes are the body that the answer announces; the completion is what comes next then. */
	bool isWholeBody(uint64 bytes) const { return bytes > 0 && announcedSize == static_cast<int64>(bytes); }

	// Request worker.
	/** @return the library; it lives as long as a run. Null: there was none when the request was built. */
	UCorvaneBPLibrary* library() const { return corvaneBPLibrary; }
	/** @return the number of this run; it names it among all that there ever were. */
	int64 number() const { return currentRun; }
	/** @return the engine request of this run. Thread: any. */
	FHttpRequestPtr request() const;
	/** @return the bytes of body that the answer announces; -1 = no answer yet, 0 = it does not say. */
	int64 bodySize() const { return announcedSize; }
	/** The body of an answer that comes as server-sent events; null where it does not. Thread: any. */
	TSharedPtr<FCorvEventBody> events;

	/** @return whether a script has asked to cancel this request, which the log is told then. */
	bool cancelIfAsked();
	/** @return the status code of an answer, also of one that broke off; 0 when none came. */
	int32 codeOf(const FHttpResponsePtr& response) const;
	/** The result of an exchange that did not happen, or whose answer must not pass for a success. */
	FCorvCompletion failureOf(const FHttpResponsePtr& response);
	/** Tells the log that the exchange failed, unless a script or the end of the program wanted it so. */
	void tellFailure(int32 code);
	/** The result of an exchange without more to it, well or not. */
	FCorvCompletion resultOf(const FHttpResponsePtr& response, bool bWasSuccessful);

	/** Raises a progress event, or replaces one of this run that still waits for the game thread. */
	void report(FCorvProgressMail::FBroadcast broadcast);
	/**
	 * Ends this run with a result, its ID added.
	 * @param request  that ended; nothing keeps its body in memory from here on. Null = none was started.
	 */
	void deliver(const FHttpRequestPtr& request, FCorvCompletion result);
	void deliver(const FHttpRequestPtr& request, FCorvFileInfoResult result);
	/**
	 * Ends this run with a request that goes on with what it began, under the same ID.
	 * @param build  builds it; empty when the builder refused. Thread: game thread.
	 * @param abandon  called instead of its start; may be unset. Thread: game thread.
	 */
	void follow(TUniqueFunction<TArray<FhttpRequest>()> build, TUniqueFunction<void(UCorvaneBPLibrary&)> abandon = {});

	/** The worker's last deed. */
	void end(int64 runNumber);

private:
	void reset();
	void beginEnd(const FHttpRequestPtr& request);
	/** @return whether the run before has not brought its result yet. */
	bool isBusy();

	UCorvaneRequestCompleteObject& owner;
	UCorvaneBPLibrary* corvaneBPLibrary = nullptr; // not owned; lives at least as long as a run
	TWeakObjectPtr<UCorvaneBPLibrary> libraryHandle; // names the same
	TStrongObjectPtr<UCorvaneBPLibrary> runningLibrary; // game thread; holds the same from the first run on
	TWeakObjectPtr<UAsyncNodeCorv>
		node; // that waits for the result; null = the event tells; changed on the game thread while no worker runs
	bool bIsLaterStep = false; // its node is that of the first
	int64 currentRun = 0; // changed on the game thread while no worker runs; 0 = never started

	// Held while a callback hands over a job: the worker may be neither replaced nor stopped under it.
	FCriticalSection workerLock;
	TUniquePtr<FCorvThread> corvThread CORVANE_GUARDED_BY(workerLock); // changed on the game thread

	std::atomic<int32> statusCode{0}; // 0 = none came
	std::atomic<int64> announcedSize{-1};
	TSharedPtr<FCorvProgressMail> progressMail;
	TSharedPtr<FCorvCancelState> cancelState; // never null; shared with what follows this run
	// Set by the request worker just before the result goes out: from the handler on, the record may be started again.
	std::atomic<bool> completionPosted{false};
};
