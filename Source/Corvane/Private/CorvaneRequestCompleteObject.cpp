#include "CorvaneRequestCompleteObject.h"

#include "RequestParts.h"
#include "Rules/UploadTail.h"
#include "Runs/CorvTheadJob.h"
#include "Templates/SharedPointer.h"
#include "Templates/UniquePtr.h"

UCorvaneRequestCompleteObject::UCorvaneRequestCompleteObject(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
	, parts(MakeShared<FCorvRequestParts>(*this))
{
}

void UCorvaneRequestCompleteObject::BeginDestroy()
{
	parts->run.freeWorker();
	Super::BeginDestroy();
}

bool UCorvaneRequestCompleteObject::initCorv()
{
	if (!parts->run.begin())
	{
		return false;
	}
	parts->upload.begin();
	parts->download.begin();
	parts->steppedDownload.begin();
	return true;
}

// The entry points.

void UCorvaneRequestCompleteObject::requestComplete(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	parts->upload.closeBody();
	addCompletionJob(ECorvJobType::Complete, InRequest, InResponse, bInWasSuccessful && !parts->upload.isBroken());
}

void UCorvaneRequestCompleteObject::requestCompleteLowRam(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	addCompletionJob(ECorvJobType::CompleteLowRam, InRequest, InResponse, bInWasSuccessful);
}

void UCorvaneRequestCompleteObject::requestMultiStepComplete(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!isLibraryMissing(12))
	{
		addCompletionJob(ECorvJobType::MultiStepComplete, InRequest, InResponse, bInWasSuccessful);
	}
}

void UCorvaneRequestCompleteObject::requestMultiStepDownload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::MultiStepDownload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressUpload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressUpload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressDownload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressDownload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressServerSendEvent(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressServerSendEvent, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressDownloadLowRam(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressDownloadLowRam, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestStatusCode(FHttpRequestPtr, int32 InCode)
{
	parts->run.setStatusCode(InCode);
}

void UCorvaneRequestCompleteObject::requestHeader(FHttpRequestPtr, const FString& InName, const FString& InValue)
{
	parts->run.setHeader(InName, InValue);
}

void UCorvaneRequestCompleteObject::takeEventBytes(void* InBytes, int64& InOutNumber)
{
	if (!parts->run.events->append(InBytes, InOutNumber))
	{
		InOutNumber = 0; // ends the transfer
		return;
	}
	requestProgressServerSendEvent(nullptr, 0, static_cast<uint64>(parts->run.events->size()));
}

void UCorvaneRequestCompleteObject::requestBodyHandedOut(FHttpRequestPtr, uint64 InBytesSent, uint64)
{
	requestProgressUpload(parts->run.request(), InBytesSent, 0);
}

void UCorvaneRequestCompleteObject::requestBodyBroken()
{
	parts->upload.setBroken();
	if (const FHttpRequestPtr Request = parts->run.request())
	{
		Request->CancelRequest();
	}
}

void UCorvaneRequestCompleteObject::addCompletionJob(
	ECorvJobType InType, const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	parts->run.addJob(MakeUnique<FCorvTheadJob>(FCorvTheadJob{InType, InRequest, InResponse, bInWasSuccessful}));
}

void UCorvaneRequestCompleteObject::addProgressJob(
	ECorvJobType InType, const FHttpRequestPtr& InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	const bool bEndFollows = parts->run.isWholeBody(InBytesReceived);
	parts->run.addJob(
		MakeUnique<FCorvTheadJob>(FCorvTheadJob{InType, InRequest, nullptr, false, InBytesSent, InBytesReceived, bEndFollows}));
}

// Their other halves.

bool UCorvaneRequestCompleteObject::isLibraryMissing(int32 InPlace) const
{
	const bool bMissing = !parts->run.library();
	if (bMissing)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (%d)."), InPlace);
	}
	return bMissing;
}

bool UCorvaneRequestCompleteObject::isWanted(int32 InPlace, const FHttpRequestPtr& InRequest) const
{
	return !isLibraryMissing(InPlace) && InRequest.IsValid() && !parts->run.cancelIfAsked();
}

void UCorvaneRequestCompleteObject::requestCompleteInternal(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (isLibraryMissing(12))
	{
		return;
	}
	FCorvRun& Run = parts->run;
	if (CorvaneRules::needsRepair(Run.httpRequest)) // before anything else, and whatever the outcome
	{
		Run.library()->addRequestToTruncateThread(Run.httpRequest);
	}
	if (getMultiStepDownloadType() == EMultiStepType::E_GOOGLE_DRIVE_FILE_INFO)
	{
		parts->pageRequest.completeFileInfo(InRequest, InResponse, bInWasSuccessful);
		return;
	}
	if (!parts->download.file.path.IsEmpty())
	{
		parts->download.complete(InRequest, InResponse, bInWasSuccessful);
		return;
	}
	if (!bInWasSuccessful)
	{
		parts->upload.tellIfSentOn(Run.codeOf(InResponse));
	}
	Run.deliver(InRequest, Run.resultOf(InResponse, bInWasSuccessful));
}

void UCorvaneRequestCompleteObject::requestCompleteLowRamInternal(
	FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!isLibraryMissing(12))
	{
		parts->steppedDownload.complete(InRequest, InResponse, bInWasSuccessful);
	}
}

void UCorvaneRequestCompleteObject::requestMultiStepCompleteInternal(
	FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	parts->pageRequest.complete(InRequest, InResponse, bInWasSuccessful);
}

void UCorvaneRequestCompleteObject::requestProgressUploadInternal(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64)
{
	if (isWanted(53, InRequest))
	{
		parts->upload.report(InBytesSent);
	}
}

void UCorvaneRequestCompleteObject::requestProgressDownloadInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	if (isWanted(83, InRequest) && parts->run.bodySize() >= 0)
	{
		parts->download.reportBody(InBytesReceived, static_cast<uint64>(parts->run.bodySize()));
	}
}

void UCorvaneRequestCompleteObject::requestMultiStepDownloadInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	const bool bWanted = isWanted(83, InRequest);
	if (bWanted && parts->pageRequest.isSecondStep() && parts->run.bodySize() >= 0) // a page on the way to the file is no part of it
	{
		const int64 Size = getHTMLFileSize() > 0 ? getHTMLFileSize() : parts->run.bodySize();
		parts->download.reportBody(InBytesReceived, static_cast<uint64>(Size));
	}
}

void UCorvaneRequestCompleteObject::requestProgressServerSendEventInternal(FHttpRequestPtr, uint64, uint64)
{
	FCorvRun& Run = parts->run;
	FString Text;
	if (Run.events->nextChunk(Text) && Run.library())
	{
		CorvaneDelivery::serverSendEvent(Run.library(), MoveTemp(Text), Run.requestID);
	}
}

void UCorvaneRequestCompleteObject::requestProgressDownloadLowRamInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	if (isWanted(127, InRequest) && parts->run.bodySize() >= 0)
	{
		parts->steppedDownload.report(*InRequest, InBytesReceived);
	}
}

FString UCorvaneRequestCompleteObject::generateURLFromHTML(FString InHtml, FString InUrl)
{
	return parts->pageRequest.generateURLFromHTML(InHtml, InUrl);
}

// What builders and the dispatcher set and ask for.

FCorvRun& UCorvaneRequestCompleteObject::run() const
{
	return parts->run;
}

FCorvDownload& UCorvaneRequestCompleteObject::download() const
{
	return parts->download;
}

FCorvSteppedDownload& UCorvaneRequestCompleteObject::steppedDownload() const
{
	return parts->steppedDownload;
}

FCorvPageRequest& UCorvaneRequestCompleteObject::pageRequest() const
{
	return parts->pageRequest;
}

FString UCorvaneRequestCompleteObject::getRequestID() const
{
	return parts->run.requestID;
}

void UCorvaneRequestCompleteObject::setRequestID(FString InID, FhttpRequest InRequest, UCorvaneBPLibrary* InLibrary)
{
	setRequestStruct(MoveTemp(InRequest));
	parts->run.requestID = MoveTemp(InID);
	parts->run.setLibrary(InLibrary);
}

void UCorvaneRequestCompleteObject::setRequestStruct(FhttpRequest InRequest)
{
	InRequest.setRequestCompleteObject(nullptr); // or this object would keep itself alive
	parts->run.httpRequest = MoveTemp(InRequest);
}

UCorvaneBPLibrary* UCorvaneRequestCompleteObject::getLibrary() const
{
	return parts->run.getLibrary();
}

FString UCorvaneRequestCompleteObject::getDownloadID() const
{
	return parts->pageRequest.plan.downloadID;
}

void UCorvaneRequestCompleteObject::setDownloadID(FString InID)
{
	parts->pageRequest.plan.downloadID = MoveTemp(InID);
}

int64 UCorvaneRequestCompleteObject::getFileCancelResumeDownloadByteFullSize() const
{
	return parts->download.plan.fullSize;
}

void UCorvaneRequestCompleteObject::setFileCancelResumeDownloadByteFullSize(int64 InSize)
{
	parts->download.plan.fullSize = InSize;
}

int64 UCorvaneRequestCompleteObject::getFileCancelResumeDownloadBytePartSize() const
{
	return parts->download.plan.stepSize;
}

void UCorvaneRequestCompleteObject::setFileCancelResumeDownloadBytePartSize(int64 InSize)
{
	parts->download.plan.stepSize = InSize;
}

int64 UCorvaneRequestCompleteObject::getFileCancelResumeDownloadByteStart() const
{
	return parts->download.plan.start;
}

void UCorvaneRequestCompleteObject::setFileCancelResumeDownloadByteStart(int64 InStart)
{
	parts->download.plan.start = FMath::Max<int64>(InStart, 0);
}

FString UCorvaneRequestCompleteObject::getFileCancelResumeDownloadDir() const
{
	return parts->download.file.path;
}

void UCorvaneRequestCompleteObject::setFileCancelResumeDownloadDir(FString InDir)
{
	parts->download.file.path = MoveTemp(InDir);
}

uint64 UCorvaneRequestCompleteObject::getUploadSize() const
{
	return parts->upload.uploadSize;
}

void UCorvaneRequestCompleteObject::setUploadSize(uint64 InSize)
{
	parts->upload.uploadSize = InSize;
}

void UCorvaneRequestCompleteObject::setUploadBody(const TSharedPtr<FArchive, ESPMode::ThreadSafe>& InBody)
{
	parts->upload.body = InBody;
}

int64 UCorvaneRequestCompleteObject::getHTMLFileSize() const
{
	return parts->pageRequest.plan.HTMLFileSize;
}

void UCorvaneRequestCompleteObject::setHTMLFileSize(int64 InSize)
{
	parts->pageRequest.plan.HTMLFileSize = InSize;
}

int32 UCorvaneRequestCompleteObject::getMultiStepDownload() const
{
	return parts->pageRequest.plan.multiStepDownload;
}

void UCorvaneRequestCompleteObject::setMultiStepDownload(int32 InStep)
{
	parts->pageRequest.plan.multiStepDownload = InStep;
}

EMultiStepType UCorvaneRequestCompleteObject::getMultiStepDownloadType() const
{
	return parts->pageRequest.plan.multiStepDownloadType;
}

void UCorvaneRequestCompleteObject::setMultiStepDownloadType(EMultiStepType InType)
{
	parts->pageRequest.plan.multiStepDownloadType = InType;
}
