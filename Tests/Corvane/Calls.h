#pragma once

#include "CorvaneBPLibrary.h"

#include <string_view>

/** Values for the pins of builders and node factories, under the names of the pins; a call takes those that it has pins for. */
struct Pins
{
	TArray<FhttpRequest> otherHttpRequests = {};
	FString url = {};
	FString downloadID = {};
	TMap<FString, FString> header = {};
	FString verb = TEXT("patch");
	EHTTPCorvIndividualType contentType = EHTTPCorvIndividualType::STRING;
	FString content = {};
	bool addContentLengthHeader = false;
	EHTTPCorvFileDownloadResumeType actionIfFileExists = EHTTPCorvFileDownloadResumeType::E_OVERWRITE;
	FString filePathWithFileName = {}; // of a download
	int32 fileSizeStepsInBytes = 4;
	FString filePath = {}; // of an upload
	TArray<FString> filePaths = {};
	FString fileID = TEXT("field");
	TArray<FString> fileIDs = {};
	TMap<FString, FString> POSTData = {};
	EHTTPCorvFileUploadType uploadType = EHTTPCorvFileUploadType::PUT;
	int64 optionalFileSizeInByte = 5 << 20;
	bool bindDownloadProgressEvent = false;
	bool bindUploadProgressEvent = false;
	bool bindServerSendEvent = false;
	FString optionalRequestID = {};

	// What comes out.
	TArray<FhttpRequest> httpRequests = {};
	FString requestID = {};
	int32 statusCode = 0;
	UObject* node = nullptr;
};

/** Calls a builder or a node factory the way scripts do. */
void call(std::string_view function, Pins& pins);
/** The same. @return the records; none when they were refused. */
TArray<FhttpRequest> build(std::string_view builder, Pins pins);
