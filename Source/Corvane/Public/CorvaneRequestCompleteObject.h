#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "HAL/CriticalSection.h"
#include "Interfaces/IHttpRequest.h"
#include "Interfaces/IHttpResponse.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

#include <atomic>

#include "CorvaneRequestCompleteObject.generated.h"

class FCorvEventBody;
class FCorvProgressMail;
class FCorvThread;
class UAsyncNodeCorv;
enum class ECorvJobType : int32;
struct FCorvCancelState;
struct FCorvCompletion;
struct FCorvDownloadAnswer;
struct FCorvTheadJob;

/** What tells one version of a file on a server from the next, as an answer gave it; empty and 0 = not told. */
struct FCorvFileVersion
{
	FString eTag;
	FString lastModified;
	int64 total = 0; // bytes
};

/** The speed of a download, as it was measured last. */
struct FCorvSpeed
{
	int64 bytes = 0; // received at the last measurement
	int64 time = 0; // of it, in ticks of 100 ns; 0 = never measured
	float megabit = 0;
};

/**
 * Receives all callbacks of one request. Callbacks only queue a job on the request's own worker; the half of a callback
 * that does the work carries "Internal" in its name and runs there. Built on the game thread by a builder, rooted while
 * its request runs.
 */
UCLASS()
class CORVANE_API UCorvaneRequestCompleteObject : public UObject
{
	GENERATED_BODY()

public:
	UCorvaneRequestCompleteObject(const FObjectInitializer& ObjectInitializer = FObjectInitializer::Get());

	/** Stops and frees the worker. */
	virtual void BeginDestroy() override;

	/**
	 * Gets ready for a run: takes root, makes the worker and looks which node waits for the result.
	 * @return false when the library is gone, which the log tells, or the run before has not ended; nothing has changed then.
	 * @note Thread: game thread.
	 */
	bool initCorv();
	/** Ends the worker behind the job it is in; the object is released. So ends a run whose request will not be started. */
	void stopJobs();
	/** Names the engine request that this run is about to start, so that the end of the program can cancel it. */
	void setHttpRequest(FHttpRequestPtr request);

	// Thread: HTTP callback. The entry points queue a job and return.
	void requestComplete(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	void requestCompleteLowRam(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	void requestMultiStepDownload(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressUpload(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressDownload(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressServerSendEvent(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressDownloadLowRam(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestMultiStepComplete(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	/** Keeps the code: of an exchange that does not end in order, the response may never tell it. */
	void requestStatusCode(FHttpRequestPtr request, int32 code);
	/** Keeps the length of the body: the response must not be looked at while it comes in. */
	void requestHeader(FHttpRequestPtr request, const FString& name, const FString& value);
	/** Takes the bytes of server-sent events; sets number to 0 when there is no room for them, which ends the transfer. */
	void takeEventBytes(void* bytes, int64& number);
	/** The body of the request, a stream of the module's own, has been read so far. */
	void requestBodyHandedOut(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);

	// Thread: request worker.
	void requestCompleteInternal(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	void requestCompleteLowRamInternal(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	void requestMultiStepCompleteInternal(FHttpRequestPtr request, FHttpResponsePtr response, bool bWasSuccessful);
	void requestMultiStepDownloadInternal(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressUploadInternal(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressDownloadInternal(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressServerSendEventInternal(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);
	void requestProgressDownloadLowRamInternal(FHttpRequestPtr request, uint64 bytesSent, uint64 bytesReceived);

	/**
	 * The address that a page leads to; reads the size that the page shows when none is known yet.
	 * @param html  the page as text.
	 * @param url  that of the page.
	 * @return for a Drive page url and the confirmation token, which may be empty; for a file page the link.
	 * @note Thread: request worker.
	 */
	FString generateURLFromHTML(FString html, FString url);

	/** Makes this request a later step of one that a library has begun, and for which a node may wait. */
	void continueRequest(UCorvaneBPLibrary& library, TWeakObjectPtr<UAsyncNodeCorv> node);

	/** Makes a download the one that may write its target, when this run begins one. */
	void claimDownloadTarget();
	/**
	 * Makes this request a later step of a download.
	 * @param download  the number under which the first step has claimed the target.
	 * @param version  of the file, as the step before saw it.
	 * @param speed  as the step before measured it.
	 */
	void continueDownload(int64 download, FCorvFileVersion version, const FCorvSpeed& speed);

	/** Called by the worker as its last deed: releases this object, one game-thread task later. */
	void workerEnded(int64 runNumber);
	/** As stopJobs, and waits for the end. Thread: game thread. */
	void stopWorker();

	FString getRequestID() const { return requestID; }
	/** Sets the ID together with a copy of the record and the library that events go to. */
	void setRequestID(FString id, FhttpRequest request, UCorvaneBPLibrary* library);
	void setRequestStruct(FhttpRequest request);
	/** @return the library that events go to; null when there was none when the request was built, and when it is gone. Thread: game thread. */
	UCorvaneBPLibrary* getLibrary() const { return libraryHandle.Get(); }
	/** @return the node that waited for the result when this run, or the step before, began; null = the event tells. */
	TWeakObjectPtr<UAsyncNodeCorv> getNode() const { return node; }
	FString getDownloadID() const { return downloadID; }
	void setDownloadID(FString id) { downloadID = id; }
	/** Bytes; the size of the whole file on the server. */
	int64 getFileCancelResumeDownloadByteFullSize() const { return fileCancelResumeDownloadByteFullSize; }
	void setFileCancelResumeDownloadByteFullSize(int64 size) { fileCancelResumeDownloadByteFullSize = size; }
	/** Bytes; the step of a stepped download. */
	int64 getFileCancelResumeDownloadBytePartSize() const { return fileCancelResumeDownloadBytePartSize; }
	void setFileCancelResumeDownloadBytePartSize(int64 size) { fileCancelResumeDownloadBytePartSize = size; }
	/** The first byte that the request asks for; negative values count as 0. */
	int64 getFileCancelResumeDownloadByteStart() const { return fileCancelResumeDownloadByteStart; }
	void setFileCancelResumeDownloadByteStart(int64 start) { fileCancelResumeDownloadByteStart = FMath::Max<int64>(start, 0); }
	/** Full path of a download's target; empty for requests that write no file. */
	FString getFileCancelResumeDownloadDir() const { return fileCancelResumeDownloadDir; }
	void setFileCancelResumeDownloadDir(FString path) { fileCancelResumeDownloadDir = path; }
	/** Bytes of the body that the next start sends as a stream. */
	uint64 getUploadSize() const { return uploadSize; }
	void setUploadSize(uint64 size) { uploadSize = size; }
	/** Bytes; 0 = unknown. */
	int64 getHTMLFileSize() const { return HTMLFileSize; }
	void setHTMLFileSize(int64 size) { HTMLFileSize = size; }
	/** Above 0: a step of a request that takes more than one exchange. */
	int32 getMultiStepDownload() const { return multiStepDownload; }
	void setMultiStepDownload(int32 step) { multiStepDownload = step; }
	EMultiStepType getMultiStepDownloadType() const { return multiStepDownloadType; }
	void setMultiStepDownloadType(EMultiStepType type) { multiStepDownloadType = type; }

private:
	void addJob(FCorvTheadJob* job);
	void addProgressJob(ECorvJobType type, const FHttpRequestPtr& request, uint64 bytesSent, uint64 bytesReceived);
	/** @return whether a script has asked to cancel this request, which the log is told then. */
	bool cancelIfAsked();
	/** @return the status code of an answer, also of one that broke off; 0 when none came. */
	int32 codeOf(const FHttpResponsePtr& response) const;
	/** The result of an exchange that did not happen, or whose answer must not pass for a success. */
	FCorvCompletion failureOf(const FHttpResponsePtr& response);
	void freeWorker();
	void resetRun();
	/** Ends this run with a result, its ID added. */
	void deliver(const FHttpRequestPtr& request, FCorvCompletion result);

	// downloads
	void completeDownload(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);
	FCorvCompletion writeBody(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	FCorvCompletion keepReceivedBytes(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	FCorvCompletion failedDownload(const FString& reason);
	void tellFailedDownload(const FString& reason);
	/** Whether an answer is of the version that the bytes on disk were taken from, as far as this program has seen that. */
	bool isKeptVersion(const IHttpResponse& response) const;
	void rememberVersion(const IHttpResponse& response);
	int64 downloadNumber() const;
	void releaseDownloadTarget();
	void measureSpeed(int64 bytes);
	void reportBody(uint64 bytesReceived, uint64 bodySize);
	void reportDownload(float total, float received);

	// pages
	void completeFileInfo(const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);
	bool findSecondStep(const IHttpResponse& response, FString& url);
	void startSecondStep(const FString& url);

	// stepped downloads
	void takeProbeAnswer(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	void takeStepAnswer(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	bool writeStep(const IHttpResponse& response, const FCorvDownloadAnswer& answer);
	void abortSteps(const FHttpRequestPtr& request, const FHttpResponsePtr& response);
	void startStep(const IHttpResponse& response, int64 total, int64 start);
	void endUnwantedBody(IHttpRequest& request, uint64 bytesReceived);
	void endSteps(const FHttpRequestPtr& request, FCorvCompletion result);

	int64 fileCancelResumeDownloadByteFullSize = 0;
	int64 fileCancelResumeDownloadBytePartSize = 0;
	int64 fileCancelResumeDownloadByteStart = 0;
	FString fileCancelResumeDownloadDir;
	FCorvThread* corvThread = nullptr; // owned; guarded by workerLock, changed on the game thread
	FhttpRequest httpRequest; // holds no completion object
	FString requestID;
	FString downloadID;
	UCorvaneBPLibrary* corvaneBPLibrary = nullptr; // not owned; lives at least as long as a run
	TWeakObjectPtr<UCorvaneBPLibrary> libraryHandle; // names the same
	TStrongObjectPtr<UCorvaneBPLibrary> runningLibrary; // game thread; holds the same from the first run on
	TWeakObjectPtr<UAsyncNodeCorv> node; // changed on the game thread while no worker runs
	bool bIsLaterStep = false; // its node is that of the first
	int32 multiStepDownload = 0;
	EMultiStepType multiStepDownloadType = EMultiStepType::E_GOOGLE_DRIVE_DOWNLOAD;
	int64 HTMLFileSize = 0;
	int64 lastProgressBytes = 0; // request worker, down to lastProgressTime
	int32 serverSendEventLastByte = 0;
	float megabitSpeed = 0;
	int64 lastProgressTime = 0; // ticks of 100 ns, 0 = never measured
	uint64 uploadSize = 0; // set before the start
	uint64 uploadSent = 0; // request worker
	// What the callbacks learn while the request runs; of this run, as what follows.
	std::atomic<int32> statusCode{0}; // 0 = none came
	std::atomic<int64> bodySize{-1}; // that the answer announces; -1 = no answer yet, 0 = it does not say
	TSharedPtr<FCorvEventBody> eventBody; // null without server-sent events
	TSharedPtr<FCorvProgressMail> progressMail;
	TSharedPtr<FCorvCancelState> cancelState; // never null; shared with what follows this run
	bool bTooMuchCame = false; // the answer to a step, or to the question for the size, was cut off
	FCorvFileVersion fileVersion; // as the step before saw it
	FCorvSpeed inheritedSpeed; // likewise
	int64 inheritedDownload = 0; // 0 = this request begins its download

	// Held while a callback hands over a job: the worker may be neither replaced nor stopped under it.
	FCriticalSection workerLock;
	int64 currentRun = 0; // game thread; 0 = never started
	// Set by the request worker just before the result goes out: from the handler on, the record may be started again.
	std::atomic<bool> completionPosted{false};
};
