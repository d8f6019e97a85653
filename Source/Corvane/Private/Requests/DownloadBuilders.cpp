#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "FileFunctionsCorv.h"
#include "HAL/FileManager.h"
#include "Misc/Paths.h"
#include "Requests/Refusal.h"
#include "Requests/RequestBuilder.h"
#include "Rules/DownloadRules.h"
#include "Rules/StatusCodes.h"

namespace CorvaneDownloadBuilder
{
	/** Where a download goes, as its builder was told. */
	struct FTarget
	{
		const TCHAR* builder; // begins the builder's messages
		EHTTPCorvFileDownloadResumeType action;
		EHTTPCorvFileUpload directoryType;
		FString path; // as given; full once it is checked
		int64 start = 0;
	};

	static bool resolvePath(FTarget& Target)
	{
		if (Target.path.IsEmpty())
		{
			UE_LOG(LogTemp, Error, TEXT("%s: FilePath not set."), Target.builder);
			return false;
		}
		Target.path =
			UFileFunctionsCorv::getCleanDirectory(static_cast<EFileFunctionsCorvDirectoryType>(Target.directoryType), Target.path);
		if (!FPaths::DirectoryExists(FPaths::GetPath(Target.path) + TEXT("/"))) // the root's own path is empty without it
		{
			UE_LOG(LogTemp, Error, TEXT("%s: Directory does not exist."), Target.builder);
			return false;
		}
		return true;
	}

	/** Deals with a file that is there already. @return false when the download must not go on. */
	static bool applyAction(FTarget& Target)
	{
		if (Target.action == EHTTPCorvFileDownloadResumeType::E_RESUME)
		{
			Target.start = FMath::Max<int64>(IFileManager::Get().FileSize(*Target.path), 0);
			return true;
		}
		if (Target.action == EHTTPCorvFileDownloadResumeType::E_OVERWRITE)
		{
			IFileManager::Get().Delete(*Target.path, false, false, true);
		}
		if (FPaths::FileExists(Target.path)) // also one that could not be deleted: new bytes would go after the old
		{
			UE_LOG(LogTemp, Warning, TEXT("%s: File exist. Cancel download."), Target.builder);
			return false;
		}
		return true;
	}

	/**
	 * The whole of both builders, but for the steps.
	 * @return the completion object, or null when the request was refused; the other records are handed on then.
	 */
	static UCorvaneRequestCompleteObject* build(FhttpRequest Record, FTarget Target, const FString& OptionalRequestID,
		TArray<FhttpRequest>& OtherHttpRequests, TArray<FhttpRequest>& HttpRequests, FString& RequestID)
	{
		RequestID = CorvaneBuilder::idOrNew(OptionalRequestID);
		if (!resolvePath(Target) || !CorvaneBuilder::isUrlLongEnough(Record.url) || !applyAction(Target))
		{
			HttpRequests = MoveTemp(OtherHttpRequests);
			CorvaneRefusal::atOnce(RequestID);
			return nullptr;
		}
		UCorvaneRequestCompleteObject* Object = CorvaneBuilder::append(MoveTemp(Record), RequestID, OtherHttpRequests, HttpRequests);
		Object->setFileCancelResumeDownloadDir(Target.path);
		Object->setFileCancelResumeDownloadByteStart(Target.start);
		return Object;
	}
} // namespace CorvaneDownloadBuilder

int32 UCorvaneBPLibrary::CreateHttpRequestGETDownload(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileDownloadResumeType InActionIfFileExists, EHTTPCorvFileUpload InDirectoryType,
	FString InFilePathWithFileName, FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	using namespace CorvaneDownloadBuilder;
	const FTarget Target{TEXT("CreateHttpRequestGETDownload"), InActionIfFileExists, InDirectoryType, InFilePathWithFileName};
	FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::GET, InUrl, InHeader);
	return build(MoveTemp(Record), Target, InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID)
			   ? 0
			   : CorvaneStatus::refused;
}

int32 UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileDownloadResumeType InActionIfFileExists, EHTTPCorvFileUpload InDirectoryType,
	FString InFilePathWithFileName, FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID,
	int32 InFileSizeStepsInBytes)
{
	using namespace CorvaneDownloadBuilder;
	const FTarget Target{TEXT("CreateHttpRequestGETLowRamDownload"), InActionIfFileExists, InDirectoryType, InFilePathWithFileName};
	FhttpRequest Record = CorvaneBuilder::makeRecord(EHTTPCorvRequestType::GETLowRamDownload, InUrl, InHeader);
	UCorvaneRequestCompleteObject* Object =
		build(MoveTemp(Record), Target, InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
	if (!Object)
	{
		return CorvaneStatus::refused;
	}
	Object->setFileCancelResumeDownloadBytePartSize(CorvaneRules::usableStepSize(InFileSizeStepsInBytes));
	return 0;
}
