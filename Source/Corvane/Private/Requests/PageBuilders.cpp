#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "Requests/Refusal.h"
#include "Requests/RequestBuilder.h"

namespace CorvanePageBuilder
{
	constexpr int32 firstStep = 1;

	/** @return the completion object of a GET to the Drive endpoint. */
	static UCorvaneRequestCompleteObject* appendDrive(const FString& Path, const FString& DownloadID, const FString& RequestID,
		TArray<FhttpRequest>& OtherHttpRequests, TArray<FhttpRequest>& HttpRequests)
	{
		FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::GET, UCorvaneBPLibrary::googleDriveBase() + Path);
		UCorvaneRequestCompleteObject* Object = CorvaneBuilder::append(MoveTemp(Record), RequestID, OtherHttpRequests, HttpRequests);
		Object->setDownloadID(DownloadID);
		return Object;
	}
} // namespace CorvanePageBuilder

int32 UCorvaneBPLibrary::CreateHttpRequestGoogleDrive(TArray<FhttpRequest> InOtherHttpRequests, FString InDownloadID,
	FString InOptionalRequestID, int64 InOptionalFileSizeInByte, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	if (InDownloadID.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("No downloadId in CreateHttpRequestGoogleDrive."));
		OutHttpRequests = MoveTemp(InOtherHttpRequests);
		return CorvaneRefusal::ofDriveFile(InDownloadID, OutRequestID);
	}
	UCorvaneRequestCompleteObject* Object = CorvanePageBuilder::appendDrive(
		TEXT("/uc?id=") + InDownloadID + TEXT("&export=download"), InDownloadID, OutRequestID, InOtherHttpRequests, OutHttpRequests);
	Object->setMultiStepDownload(CorvanePageBuilder::firstStep);
	Object->setHTMLFileSize(InOptionalFileSizeInByte);
	return 0;
}

int32 UCorvaneBPLibrary::CreateHttpRequestGoogleDriveFileInfo(TArray<FhttpRequest> InOtherHttpRequests, FString InDownloadID,
	FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	if (InDownloadID.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("No downloadId in CreateHttpRequestGoogleDriveFileInfo."));
		OutHttpRequests = MoveTemp(InOtherHttpRequests);
		return CorvaneRefusal::ofDriveFile(InDownloadID, OutRequestID);
	}
	UCorvaneRequestCompleteObject* Object = CorvanePageBuilder::appendDrive(
		TEXT("/file/d/") + InDownloadID + TEXT("/view"), InDownloadID, OutRequestID, InOtherHttpRequests, OutHttpRequests);
	Object->setMultiStepDownloadType(EMultiStepType::E_GOOGLE_DRIVE_FILE_INFO); // one exchange, in spite of the name
	return 0;
}

int32 UCorvaneBPLibrary::CreateHttpRequestAnonfiles(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl, FString InOptionalRequestID,
	TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	OutRequestID = CorvaneBuilder::idOrNew(InOptionalRequestID);
	if (!CorvaneBuilder::isUrlLongEnough(InUrl))
	{
		OutHttpRequests = MoveTemp(InOtherHttpRequests);
		return CorvaneRefusal::atOnce(OutRequestID);
	}
	FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::GET, InUrl);
	UCorvaneRequestCompleteObject* Object = CorvaneBuilder::append(MoveTemp(Record), OutRequestID, InOtherHttpRequests, OutHttpRequests);
	Object->setMultiStepDownload(CorvanePageBuilder::firstStep);
	Object->setMultiStepDownloadType(EMultiStepType::E_ANONFILES_PAGE);
	return 0;
}

FString UCorvaneBPLibrary::googleDriveBase()
{
	const UCorvaneBPLibrary* Library = getCorvaneTarget();
	return Library ? Library->driveBase : FString();
}

void UCorvaneBPLibrary::setGoogleDriveBase(FString InBase)
{
	if (UCorvaneBPLibrary* Library = getCorvaneTarget())
	{
		Library->driveBase = InBase.EndsWith(TEXT("/")) ? InBase.LeftChop(1) : InBase;
	}
}
