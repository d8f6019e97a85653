#include "CorvaneBPLibrary.h"

#include "Requests/Refusal.h"
#include "Requests/RequestBuilder.h"

namespace CorvaneUploadBuilder
{
	static EHTTPCorvRequestType requestTypeOf(EHTTPCorvFileUploadType UploadType)
	{
		switch (UploadType)
		{
		case EHTTPCorvFileUploadType::PUT_STREAM_BLANK:
			return EHTTPCorvRequestType::PUT_STREAM_BLANK;
		case EHTTPCorvFileUploadType::PUT_STREAM_COPY:
			return EHTTPCorvRequestType::PUT_STREAM_COPY;
		case EHTTPCorvFileUploadType::PUT_STREAM_MP:
			return EHTTPCorvRequestType::PUT_STREAM_MP;
		default:
			return EHTTPCorvRequestType::PUT;
		}
	}

	static bool hasFileIDs(const FhttpRequest& Record)
	{
		if (Record.fileIDs.IsEmpty())
		{
			UE_LOG(LogTemp, Error, TEXT("Cancel Request : File ID is missing"));
			return false;
		}
		return true;
	}

	static FhttpRequest makeUpload(
		EHTTPCorvRequestType Type, const FString& Url, const TMap<FString, FString>& Header, EHTTPCorvFileUpload DirectoryType)
	{
		FhttpRequest Record = CorvaneBuilder::makeRecord(Type, Url, Header);
		Record.directoryType = DirectoryType;
		return Record;
	}

	/** The end of every upload builder. A refused one hands the other records on, so that a chain of builders goes on. */
	static int32 checkAndAppend(bool bMulti, FhttpRequest& Record, const FString& OptionalRequestID,
		TArray<FhttpRequest>& OtherHttpRequests, TArray<FhttpRequest>& HttpRequests, FString& RequestID)
	{
		RequestID = CorvaneBuilder::idOrNew(OptionalRequestID);
		if (!CorvaneBuilder::isUrlLongEnough(Record.url) || (bMulti && !hasFileIDs(Record)))
		{
			HttpRequests = MoveTemp(OtherHttpRequests);
			return CorvaneRefusal::atOnce(RequestID);
		}
		CorvaneBuilder::append(MoveTemp(Record), RequestID, OtherHttpRequests, HttpRequests);
		return 0;
	}
} // namespace CorvaneUploadBuilder

int32 UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, FString InFilePath, FString InFileID,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	return CreateHttpRequestFileMultiUploadPOST(MoveTemp(InOtherHttpRequests), InUrl, InHeader, InDirectoryType, {InFilePath}, {InFileID},
		InPOSTData, InOptionalRequestID, OutHttpRequests, OutRequestID);
}

int32 UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, FString InFilePath, FString InFileID,
	EHTTPCorvFileUploadType InUploadType, FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	FhttpRequest Record =
		CorvaneUploadBuilder::makeUpload(CorvaneUploadBuilder::requestTypeOf(InUploadType), InUrl, InHeader, InDirectoryType);
	Record.filePath = InFilePath;
	Record.fileID = InFileID;
	return CorvaneUploadBuilder::checkAndAppend(false, Record, InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
}

int32 UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, TArray<FString> InFilePaths, TArray<FString> InFileIDs,
	TMap<FString, FString> InPOSTData, FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	FhttpRequest Record = CorvaneUploadBuilder::makeUpload(EHTTPCorvRequestType::POST_UPLOAD, InUrl, InHeader, InDirectoryType);
	Record.filePaths = InFilePaths;
	Record.fileIDs = InFileIDs;
	Record.POSTData = InPOSTData;
	return CorvaneUploadBuilder::checkAndAppend(true, Record, InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
}

int32 UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT(TArray<FhttpRequest> InOtherHttpRequests, FString InUrl,
	TMap<FString, FString> InHeader, EHTTPCorvFileUpload InDirectoryType, TArray<FString> InFilePaths, TArray<FString> InFileIDs,
	FString InOptionalRequestID, TArray<FhttpRequest>& OutHttpRequests, FString& OutRequestID)
{
	FhttpRequest Record = CorvaneUploadBuilder::makeUpload(EHTTPCorvRequestType::PUT, InUrl, InHeader, InDirectoryType);
	Record.filePaths = InFilePaths;
	Record.fileIDs = InFileIDs;
	return CorvaneUploadBuilder::checkAndAppend(true, Record, InOptionalRequestID, InOtherHttpRequests, OutHttpRequests, OutRequestID);
}
