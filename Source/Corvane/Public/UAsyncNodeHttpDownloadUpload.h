#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "UAsyncNodeCorv.h"

#include "UAsyncNodeHttpDownloadUpload.generated.h"

/** How a download or an upload ended, as onhttpRequestCompleteDelegate tells it, without the bytes. */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(FAsyncNodeHttpDownloadUploadCompleteDelegate, const FString, dataString,
	const TArray<FString>&, dataArray, const TArray<FString>&, header, int32, statusCode, const FString, requestID);

/**
 * Latent nodes of downloads to file and of uploads; they are used like those of UAsyncNodeHttpRequest. The node is not
 * rooted: whoever runs the graph holds it until its outcome, and native code has to hold it itself. The result of a node
 * that was collected goes to the library's event. Progress is reported on the library's events. Thread: game thread.
 */
UCLASS()
class CORVANE_API UAsyncNodeHttpDownloadUpload : public UAsyncNodeCorv
{
	GENERATED_BODY()

public:
	/** The file has arrived or was sent, with a status from 1 to 399. The pins are those of onhttpRequestCompleteDelegate. */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeHttpDownloadUploadCompleteDelegate OnSuccess;

	/**
	 * The request ended with any other status: the server's from 400 on, 400 when its file cannot be sent, 500 when there was no
	 * response, it was cancelled, or the bytes could not be written. What had arrived of a download stays in its file. The pins
	 * are those of OnSuccess. A request that cannot be built (a short URL, no path, a missing folder, a file that exists) has
	 * ended before anybody listens: nothing is raised here, onhttpRequestCompleteDelegate tells with status 400.
	 */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeHttpDownloadUploadCompleteDelegate OnFail;

	/** Under which the node waits for its result; cancelRequest takes it. */
	FString requestID;
	/** What Activate starts; empty once it has, and when the builder refused. */
	TArray<FhttpRequest> httpRequests;

	/** Makes a node for a download to a file. The pins are those of CreateHttpRequestGETDownload. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Download",
		meta = (BlueprintInternalUseOnly = "true", ToolTip = "", AutoCreateRefTerm = "header"))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Download_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileDownloadResumeType ActionIfFileExists, EHTTPCorvFileUpload DirectoryType, FString filePathWithFileName,
		FString optionalRequestID);

	/** Makes a node for a download in steps. The pins are those of CreateHttpRequestGETLowRamDownload. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Download",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "header",
			ToolTip =
				"For large downloads. The file is fetched in steps, so that it is never held in memory as a whole. The server must support ranges.\n@param FileSizeStepsInBytes Size of one step in bytes"))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Low_RAM_Download_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileDownloadResumeType ActionIfFileExists, EHTTPCorvFileUpload DirectoryType, FString filePathWithFileName,
		FString optionalRequestID, int32 FileSizeStepsInBytes = 10485760);

	/** Makes a node for a form with one file. The pins are those of CreateHttpRequestFileUploadPOST. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "otherHttpRequests,header,POSTData",
			ToolTip =
				"Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Upload_POST_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload DirectoryType, FString filePath, FString fileID, TMap<FString, FString> POSTData, FString optionalRequestID);

	/** Makes a node for a PUT of one file. The pins are those of CreateHttpRequestFileUploadPUT. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param uploadType PUT: The whole file is read into memory. PUT Stream (Blank): Only the file is written into the body. The headers fileid, filename, fileformat, mimetype are added. PUT Stream (Multipart): With this option a header is created which goes with a trick into the body and writes the necessary information of the file into the body. The closing information is written into the file. After the upload is finished or canceled it is removed from the file again. PUT Stream (Copy): Like Multipart, but the closing information is written into a copy of the file, which is deleted after the upload. Copying a large file can freeze the game because it happens on the game thread.\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Upload_PUT_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload DirectoryType, FString filePath, FString fileID, EHTTPCorvFileUploadType uploadType, FString optionalRequestID);

	/** Makes a node for a form with several files. The pins are those of CreateHttpRequestFileMultiUploadPOST. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "otherHttpRequests,header,POSTData",
			ToolTip =
				"Send multiple files to a Webserver in one request.\n@param fileIDs One name for each file, equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Multi_Upload_POST_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload DirectoryType, TArray<FString> filePaths, TArray<FString> fileIDs, TMap<FString, FString> POSTData,
		FString optionalRequestID);

	/** Makes a node for a PUT of several files. The pins are those of CreateHttpRequestFileMultiUploadPUT. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"Send multiple files to a Webserver in one request.\n@param fileIDs One name for each file, equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static UAsyncNodeHttpDownloadUpload* AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST(FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload DirectoryType, TArray<FString> filePaths, TArray<FString> fileIDs, FString optionalRequestID);

	virtual void Activate() override;

	/**
	 * Gives up the ID, raises OnSuccess for a status from 1 to 399, else OnFail, then ends the node. The parameters are those
	 * of httpRequestComplete, without the bytes.
	 */
	void httpRequestDownloadUploadComplete(
		FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode, FString requestID);
};
