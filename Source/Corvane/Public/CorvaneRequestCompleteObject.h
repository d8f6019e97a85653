#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "Interfaces/IHttpRequest.h"
#include "Serialization/Archive.h"
#include "Templates/SharedPointer.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

#include "CorvaneRequestCompleteObject.generated.h"

class FCorvDownload;
class FCorvPageRequest;
class FCorvRun;
class FCorvSteppedDownload;
enum class ECorvJobType : int32;
struct FCorvRequestParts;

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
	/** The body of the request cannot be read any further: the request is cancelled, and fails whatever the server answers. */
	void requestBodyBroken();

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

	/** Its run, and what the run is about; the second and the third are of downloads only, the last of pages. */
	FCorvRun& run() const;
	FCorvDownload& download() const;
	FCorvSteppedDownload& steppedDownload() const;
	FCorvPageRequest& pageRequest() const;

	FString getRequestID() const;
	/** Sets the ID together with a copy of the record and the library that events go to. */
	void setRequestID(FString id, FhttpRequest request, UCorvaneBPLibrary* library);
	void setRequestStruct(FhttpRequest request);
	/** @return the library that events go to; null when there was none when the request was built, and when it is gone. Thread: game thread. */
	UCorvaneBPLibrary* getLibrary() const;
	FString getDownloadID() const;
	void setDownloadID(FString id);
	/** Bytes; the size of the whole file on the server. */
	int64 getFileCancelResumeDownloadByteFullSize() const;
	void setFileCancelResumeDownloadByteFullSize(int64 size);
	/** Bytes; the step of a stepped download. */
	int64 getFileCancelResumeDownloadBytePartSize() const;
	void setFileCancelResumeDownloadBytePartSize(int64 size);
	/** The first byte that the request asks for; negative values count as 0. */
	int64 getFileCancelResumeDownloadByteStart() const;
	void setFileCancelResumeDownloadByteStart(int64 start);
	/** Full path of a download's target; empty for requests that write no file. */
	FString getFileCancelResumeDownloadDir() const;
	void setFileCancelResumeDownloadDir(FString dir);
	/** Bytes of the body of an upload; 0 = it has none of the module's own. */
	uint64 getUploadSize() const;
	void setUploadSize(uint64 size);
	/** The stream that carries that body; it is closed when the request ends. */
	void setUploadBody(const TSharedPtr<FArchive, ESPMode::ThreadSafe>& body);
	/** Bytes; the size of a Drive file, as a page showed it or the script knows it. */
	int64 getHTMLFileSize() const;
	void setHTMLFileSize(int64 size);
	/** Above 0: a step of a request that takes more than one exchange. */
	int32 getMultiStepDownload() const;
	void setMultiStepDownload(int32 step);
	EMultiStepType getMultiStepDownloadType() const;
	void setMultiStepDownloadType(EMultiStepType type);

private:
	void addCompletionJob(ECorvJobType type, const FHttpRequestPtr& request, const FHttpResponsePtr& response, bool bWasSuccessful);
	void addProgressJob(ECorvJobType type, const FHttpRequestPtr& request, uint64 bytesSent, uint64 bytesReceived);
	/** Tells the log, by the number of the place. */
	bool isLibraryMissing(int32 place) const;
	/** Whether progress of a request is still wanted. */
	bool isWanted(int32 place, const FHttpRequestPtr& request) const;

	TSharedPtr<FCorvRequestParts> parts; // never null
};
