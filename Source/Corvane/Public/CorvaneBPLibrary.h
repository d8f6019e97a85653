#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Interfaces/IHttpRequest.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "UObject/StrongObjectPtr.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include "CorvaneBPLibrary.generated.h"

class FByteToFileThread;
class FCorvDownloadTargets;
class FCorvRunList;
class FCorvTruncateUploadedFileThread;
class FCorvChangedFiles;
class UAsyncNodeCorv;
class UCorvaneBPLibrary;
class UCorvaneRequestCompleteObject;

//Delegates
DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams(FhttpRequestCompleteDelegate, const FString, dataString, const TArray<FString>&, dataArray,
	const TArray<FString>&, header, int32, statusCode, const TArray<uint8>&, byteData, const FString, requestID);
/**
 * Information of a Drive file.
 * @param fileName  empty when the request failed.
 * @param fileSizeInBytes  0 when the request failed.
 * @param statusCode  200; the server's or that of the system itself when the request failed; 452 for a page that cannot be read.
 * @param downloadID  names the file.
 * @param requestID  the ID that the request was built with.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(FhttpRequestCompleteGoogleInfoDelegate, const FString, fileName, int64, fileSizeInBytes,
	int32, statusCode, const FString, downloadID, const FString, requestID);
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(
	FhttpFileProgressDelegate, float, size, int32, bytesSent, float, percentUpload, int32, bytesReceived, float, percentDownload);
// This function is deprecated and will be removed. Please use httpFileDownload or httpFileUpload.
// UPROPERTY(BlueprintAssignable, Category = "Corvane|Deprecated|Events|FileProgress")
// FhttpFileProgressDelegate onhttpFileProgressDelegate;
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(
	FhttpFileDownloadDelegate, float, size, float, megaBytesReceived, float, percentDownload, float, megaBit, const FString, requestID);
/**
 * How far the body of a request has been sent.
 * @param size  Filesize in Byte
 * @param bytesSent  2147483647 at most.
 * @param percentUpload  0 to 100.
 * @param requestID  the ID that the request was built with; cancelRequest takes it.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(
	FhttpFileUploadDelegate, float, size, int32, bytesSent, float, percentUpload, const FString, requestID);
/**
 * A piece of the body of a response.
 * @param response  what has arrived since the last piece; it may hold half an event or several.
 * @param requestID  the ID that the request was built with; cancelRequest takes it.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FhttpServerSendEventDelegate, const FString, response, const FString, requestID);

/** What a record asks for. Scripts save the numbers. */
UENUM(BlueprintType)
enum class EHTTPCorvRequestType : uint8
{
	GET = 0 UMETA(DisplayName = "GET"),
	GETLowRamDownload = 1 UMETA(DisplayName = "GETLowRamDownload"),
	PUT = 2 UMETA(DisplayName = "PUT"),
	PUT_STREAM_MP = 3 UMETA(DisplayName = "PUT Stream (Multipart)"),
	PUT_STREAM_BLANK = 4 UMETA(DisplayName = "PUT Stream (Blank)"),
	PUT_STREAM_COPY = 5 UMETA(DisplayName = "PUT Stream (Copy)"),
	POST = 6 UMETA(DisplayName = "POST"),
	POST_UPLOAD = 7 UMETA(DisplayName = "POST_UPLOAD"),
	INDIVIDUAL = 8 UMETA(DisplayName = "INDIVIDUAL"),
	INDIVIDUAL_STREAM = 9 UMETA(DisplayName = "INDIVIDUAL_STEAM") // this spelling stands in saved scripts
};

/** What the content of an individual request is. */
UENUM(BlueprintType)
enum class EHTTPCorvIndividualType : uint8
{
	/** The content is the body itself, sent as UTF-8. */
	STRING = 0 UMETA(DisplayName = "Content as String"),
	/** The content is the path of a file, whose bytes are streamed as the body. */
	STREAM = 1 UMETA(DisplayName = "Content as Stream (Filepath)")
};

/** How a PUT upload travels. The numbers differ from those of EHTTPCorvRequestType. */
UENUM(BlueprintType)
enum class EHTTPCorvFileUploadType : uint8
{
	/** A form with the file, put together in memory: for small files. */
	PUT = 0 UMETA(DisplayName = "PUT"),
	/** The bare bytes, streamed from disk: for large files, to a handler of your own. */
	PUT_STREAM_BLANK = 1 UMETA(DisplayName = "PUT Stream (Blank)"),
	/** The body of PUT_STREAM_MP, made in a copy beside the file and deleted afterwards: the file stays untouched. */
	PUT_STREAM_COPY = 2 UMETA(DisplayName = "PUT Stream (Copy)"),
	/** Nearly a form, streamed from disk; its end stands in the file until shortly after the upload. */
	PUT_STREAM_MP = 3 UMETA(DisplayName = "PUT Stream (Multipart)")
};

/** What a download does when its target file exists. */
UENUM(BlueprintType)
enum class EHTTPCorvFileDownloadResumeType : uint8
{
	/** The existing file is deleted when the request is built, even if it is never started. */
	E_OVERWRITE = 0 UMETA(DisplayName = "Overwrite"),
	/** An existing file stays, and the request is refused with status 400. */
	E_NOT_OVERWRITE = 1 UMETA(DisplayName = "Cancel Download"),
	/** An existing file is kept; the server is asked for what is missing only. */
	E_RESUME = 2 UMETA(DisplayName = "Resume")
};

/** What writing bytes to a file does when the file exists. */
UENUM(BlueprintType)
enum class EHTTPCorvFileBytesToFileActionType : uint8
{
	/** The bytes take the place of the existing file. */
	E_OVERWRITE = 0 UMETA(DisplayName = "Overwrite"),
	/** An existing file stays, and nothing is written. */
	E_NOT_OVERWRITE = 1 UMETA(DisplayName = "Cancel Download")
};

/** What the path of a file function is relative to. */
UENUM(BlueprintType)
enum class EFileFunctionsCorvDirectoryType : uint8
{
	/** The path goes after the directory of the project. */
	E_gd = 0 UMETA(DisplayName = "Game directory"),
	/** The path as given; a relative one starts at the base directory of the engine. */
	E_ad = 1 UMETA(DisplayName = "Absolute directory")
};

/** The kinds of requests that take more than one exchange; not for scripts. */
enum class EMultiStepType : uint8
{
	E_GOOGLE_DRIVE_DOWNLOAD = 0,
	E_GOOGLE_DRIVE_FILE_INFO = 1,
	E_ANONFILES_PAGE = 2
};

/**
 * One request as a value: builders fill it, scripts carry it in arrays, the dispatcher turns it into an engine request.
 * Opaque to scripts. Copies share one completion object and keep it alive. Thread: game thread; a copy that leaves it
 * must have its completion object cleared first.
 */
USTRUCT(BlueprintType)
struct CORVANE_API FhttpRequest
{
	GENERATED_BODY()

	/** Sent as given: no encoding is added. */
	FString url;
	/** Form fields, sent in this order. */
	TMap<FString, FString> POSTData;
	EHTTPCorvRequestType requestType = EHTTPCorvRequestType::GET;
	/** Upload records: how the paths below are read. */
	EHTTPCorvFileUpload directoryType = EHTTPCorvFileUpload::E_gd;
	FString filePath;
	TArray<FString> filePaths;
	/** Form field name of the file; the list is parallel to filePaths. */
	FString fileID;
	TArray<FString> fileIDs;
	/** Bytes of an upload file before a stream multipart upload appended to it. */
	int64 originalFileSize = 0;
	/** The script's own headers; persistent ones are added when the request starts. */
	TMap<FString, FString> header;
	/** Individual requests: upper-cased verb; body text, or the path of the file that is the body. */
	FString verb;
	FString content;
	bool bindServerSendEvent = false;
	bool bindDownloadProgressEvent = false;
	bool bindUploadProgressEvent = false;

	/** @return the object that receives every callback of this request, or null. */
	UCorvaneRequestCompleteObject* requestCompleteObject() const;
	void setRequestCompleteObject(UCorvaneRequestCompleteObject* object);

private:
	// Held by the base class: the completion object keeps a record of its own, so its class is not complete here.
	TStrongObjectPtr<UObject> completeObject;
};

/**
 * The library of script functions and, as its class default object, the one object that owns what requests share and
 * that carries the events. Paths are resolved as getCleanDirectory does. Thread: game thread, unless a function says
 * otherwise.
 */
UCLASS()
class CORVANE_API UCorvaneBPLibrary : public UBlueprintFunctionLibrary
{
	GENERATED_BODY()

public:
	UCorvaneBPLibrary(const FObjectInitializer& ObjectInitializer = FObjectInitializer::Get());
	virtual ~UCorvaneBPLibrary() override;

	/**
	 * Raised once for each request that has ended, well or not; a request that a latent node waits for ends there instead.
	 * @param dataString  the body as text; empty above 512 MiB.
	 * @param dataArray  the body's lines, cut at CR LF, empty ones dropped; none above 64 MiB or 1,000,000 lines.
	 * @param header  the response headers, each "Name: value".
	 * @param statusCode  the server's, or 400 (refused) or 500 (no response) of the system itself.
	 * @param byteData  the body's bytes; none of a download that was written to a file.
	 * @param requestID  the ID that the request was built with.
	 */
	UPROPERTY(BlueprintAssignable, Category = "Corvane|Events|RequestComplete")
	FhttpRequestCompleteDelegate onhttpRequestCompleteDelegate;

	/** Raised once for each request for the information of a Drive file. */
	UPROPERTY(BlueprintAssignable, Category = "Corvane|Events|RequestCompleteGoogleInfo")
	FhttpRequestCompleteGoogleInfoDelegate onhttpRequestCompleteGoogleInfoDelegate;

	/**
	 * The progress of a download: raised again and again while the body of a response arrives.
	 * @param size  Filesize in Megabyte
	 * @param megaBytesReceived  of the file, with what a resumed download found on disk.
	 * @param percentDownload  0 to 100 when the server tells the size.
	 * @param megaBit  Downloadspeed in Megabit/second
	 * @param requestID  the ID that the request was built with; cancelRequest takes it.
	 */
	UPROPERTY(BlueprintAssignable, Category = "Corvane|Events|Download")
	FhttpFileDownloadDelegate onhttpFileDownloadDelegate;

	/** The progress of an upload: raised again and again while the body of a request is sent. */
	UPROPERTY(BlueprintAssignable, Category = "Corvane|Events|Upload")
	FhttpFileUploadDelegate onhttpFileUploadDelegate;

	/** Server-sent events (SSE): raised for each piece of the body of a request that was built with bindServerSendEvent. */
	UPROPERTY(BlueprintAssignable, Category = "Corvane|Events|ServerSendEvent")
	FhttpServerSendEventDelegate onhttpServerSendEventDelegate;

	/** The library's own listener: forgets the cancel mark and the running request of a finished ID. */
	UFUNCTION()
	void httpRequestCompleteDelegate(const FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header,
		int32 statusCode, const TArray<uint8>& byteData, const FString requestID);

	/** A handler that does nothing. */
	UFUNCTION()
	void httpRequestCompleteGoogleInfoDelegate(
		const FString fileName, int64 fileSizeInBytes, int32 statusCode, const FString downloadID, const FString requestID);

	/**
	 * A handler that does nothing.
	 * @param size  Filesize in Megabyte
	 * @param megaBit  Downloadspeed in Megabit/second
	 */
	UFUNCTION()
	void httpFileDownloadDelegate(float size, float megaBytesReceived, float percentDownload, float megaBit, const FString requestID);

	/**
	 * A handler that does nothing.
	 * @param size  Filesize in Byte
	 */
	UFUNCTION()
	void httpFileUploadDelegate(float size, int32 bytesSent, float percentUpload, const FString requestID);

	/** A handler that does nothing. */
	UFUNCTION()
	void httpServerSendEventDelegate(const FString response, const FString requestID);

	/** @return the object that carries the events; null before the module's classes are set up, and when it is gone. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Events", meta = (ToolTip = "Return a Target for the Events"))
	static UCorvaneBPLibrary* getCorvaneTarget();

	/**
	 * Starts every record of an array, in order and without waiting for any.
	 * @param httpRequests  from the builders; an empty array starts nothing.
	 * @param CorvaneTarget  the object that carries the events.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Requests",
		meta = (ToolTip = "Starts all HTTP requests of the array at once. The results arrive at the events of the target."))
	static void executeHttpRequests(TArray<FhttpRequest> httpRequests, UCorvaneBPLibrary*& CorvaneTarget);

	/**
	 * Builds a GET request.
	 * @param otherHttpRequests  the records built so far; the new one goes after them.
	 * @param url  at least 3 characters, sent as given.
	 * @param header  name to value; they replace persistent headers of the same name.
	 * @param optionalRequestID  comes back in every event; empty = a new GUID of 32 upper-case hexadecimal digits.
	 * @param bindServerSendEvent  deliver the body in pieces as it arrives (server-sent events, SSE) instead of download
	 * progress.
	 * @param httpRequests  otherHttpRequests and the new record; left as it was when the request is refused.
	 * @param requestID  the request's ID, also when it is refused.
	 * @return 0, or 400 when the request was refused; the refusal is also broadcast, inside this call.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"Send a GET HTTP Request to Webserver.\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param bindServerSendEvent Switches on server-sent events for this request (several responses to one request)."))
	static int32 CreateHttpRequestGET(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		FString optionalRequestID, bool bindServerSendEvent, TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds a POST request whose body is made of form fields.
	 * @param POSTData  name to value; sent as name=value joined by "&", in this order, without any encoding: values go
	 * through urlEncode first. The other parameters are those of CreateHttpRequestGET.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|POST",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header,POSTData",
			ToolTip =
				"Send a POST HTTP Request to Webserver.\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param bindServerSendEvent Switches on server-sent events for this request (several responses to one request)."))
	static int32 CreateHttpRequestPOST(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		TMap<FString, FString> POSTData, FString optionalRequestID, bool bindServerSendEvent, TArray<FhttpRequest>& httpRequests,
		FString& requestID);

	/**
	 * Builds a request of which the caller sets everything. A refusal is reported one game-thread task later, with status
	 * 400 and the ID that requestID held before the call; httpRequests is left as it was then. The other parameters are
	 * those of CreateHttpRequestGET.
	 * @param header  must not be empty and must hold a Content-Type.
	 * @param verb  GET, HEAD, POST, PUT, DELETE, TRACE, OPTIONS, CONNECT or PATCH, in any case.
	 * @param contentBody  STRING: the body, sent as UTF-8; STREAM: path of the file whose bytes are the body.
	 * @param addContentLengthHeader  sets a Content-Length of as many bytes as contentBody has in UTF-8; with STREAM that
	 * is the length of the path.
	 * @param bindDownloadProgressEvent  report download progress; upload progress wins over it.
	 * @param bindUploadProgressEvent  report upload progress; server-sent events win over both.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Individual",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"Individual HTTP Request. You have to set all parameters yourself.\n@param header For example User-Agent and Content-Type.\n@param verb POST, GET, PUT, PATCH, DELETE\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param bindServerSendEvent Switches on server-sent events for this request (several responses to one request)."))
	static void CreateHttpRequestIndividual(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		FString verb, EHTTPCorvIndividualType contentBodyType, FString contentBody, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID, bool addContentLengthHeader, bool bindDownloadProgressEvent,
		bool bindUploadProgressEvent, bool bindServerSendEvent);

	/**
	 * Builds a download that arrives as one body and is then written to a file; its bytes are not in the event. A download
	 * that is cancelled or breaks off leaves the bytes it has received in the file, where E_RESUME goes on. The other
	 * parameters are those of CreateHttpRequestGET.
	 * @param ActionIfFileExists  what becomes of an existing file; E_OVERWRITE deletes it in this call.
	 * @param DirectoryType, filePathWithFileName  name the target; its directory must exist.
	 * @param httpRequests  otherHttpRequests and the new record; just otherHttpRequests when the request is refused.
	 * @param requestID  the request's ID, also when it is refused.
	 * @return 0, or 400 when the request was refused; the refusal is also broadcast, inside this call.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Download",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip = "For downloads. Data is copied to the hard disk if you cancel the download."))
	static int32 CreateHttpRequestGETDownload(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileDownloadResumeType ActionIfFileExists, EHTTPCorvFileUpload DirectoryType, FString filePathWithFileName,
		FString optionalRequestID, TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds a download in ranged steps, each of which is written to the file before the next is asked for: never more than
	 * one step is in memory. The server must answer ranged requests. Parameters and result are those of
	 * CreateHttpRequestGETDownload; a cancel keeps the steps that are complete.
	 * @param FileSizeStepsInBytes  bytes of a step, 2^30 at most; below 1 = the default.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Download",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"For large downloads. The file is fetched in steps, so that it is never held in memory as a whole. The server must support ranges.\n@param FileSizeStepsInBytes Size of one step in bytes"))
	static int32 CreateHttpRequestGETLowRamDownload(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileDownloadResumeType ActionIfFileExists, EHTTPCorvFileUpload DirectoryType, FString filePathWithFileName,
		FString optionalRequestID, TArray<FhttpRequest>& httpRequests, FString& requestID, int32 FileSizeStepsInBytes = 10485760);

	/**
	 * Builds a POST of one file, and text fields, as multipart/form-data. The file is read whole into memory when the
	 * request starts. A file that cannot be read then is reported as a completion of status 400. The other parameters are
	 * those of CreateHttpRequestGET.
	 * @param directoryType, filePath  name the file.
	 * @param fileID  form field name of the file.
	 * @param POSTData  form fields, sent after the file as they are.
	 * @param requestID  the request's ID, also when it is refused.
	 * @param httpRequests  otherHttpRequests and the new record; just otherHttpRequests when the request is refused.
	 * @return 0, or 400 when the request was refused; the refusal is also broadcast, inside this call.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header,POSTData",
			ToolTip =
				"Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestFileUploadPOST(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload directoryType, FString filePath, FString fileID, TMap<FString, FString> POSTData, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds a PUT of one file. The stream kinds never load the file; two of them change a file on disk until shortly after
	 * the upload: PUT_STREAM_MP the file itself, PUT_STREAM_COPY a copy. The other parameters are those of
	 * CreateHttpRequestFileUploadPOST.
	 * @param uploadType  how the file travels.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header",
			ToolTip =
				"Send a file to a Webserver.\n@param fileID name equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param uploadType PUT: The whole file is read into memory. PUT Stream (Blank): Only the file is written into the body. The headers fileid, filename, fileformat, mimetype are added. PUT Stream (Multipart): With this option a header is created which goes with a trick into the body and writes the necessary information of the file into the body. The closing information is written into the file. After the upload is finished or canceled it is removed from the file again. PUT Stream (Copy): Like Multipart, but the closing information is written into a copy of the file, which is deleted after the upload. Copying a large file can freeze the game because it happens on the game thread.\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestFileUploadPUT(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload directoryType, FString filePath, FString fileID, EHTTPCorvFileUploadType uploadType, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds a POST of several files in one multipart/form-data body, in the way of CreateHttpRequestFileUploadPOST.
	 * @param filePaths  in the order in which they are sent; one that cannot be read refuses the whole request.
	 * @param fileIDs  form field names, parallel to filePaths; at least one. A file without one gets an empty name.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header,filePaths,fileIDs,POSTData",
			ToolTip =
				"Send multiple files to a Webserver in one request.\n@param fileIDs One name for each file, equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestFileMultiUploadPOST(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload directoryType, TArray<FString> filePaths, TArray<FString> fileIDs, TMap<FString, FString> POSTData,
		FString optionalRequestID, TArray<FhttpRequest>& httpRequests, FString& requestID);

	/** Builds a PUT of several files in one multipart/form-data body. See CreateHttpRequestFileMultiUploadPOST. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (AutoCreateRefTerm = "otherHttpRequests,header,filePaths,fileIDs",
			ToolTip =
				"Send multiple files to a Webserver in one request.\n@param fileIDs One name for each file, equivalent to <input type=\"file\" name=\"myFile\"> from an html upload\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param requestID Optional parameter. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestFileMultiUploadPUT(TArray<FhttpRequest> otherHttpRequests, FString url, TMap<FString, FString> header,
		EHTTPCorvFileUpload directoryType, TArray<FString> filePaths, TArray<FString> fileIDs, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Looks for what a PUT_STREAM_MP upload that never ended has left at the end of a file. Copies of the file that
	 * PUT_STREAM_COPY has left beside it are named in the log, and stay.
	 * @param found  whether the file ends so.
	 * @param originalFileSize  bytes of the file before that upload; left as it was unless found.
	 * @note Thread: any.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (ToolTip =
					"Searches a file for leftovers of a multipart stream upload, for example after a crash.\n@param originalFileSize Size in bytes that the file had before the upload"))
	static void searchUploadLeftovers(EHTTPCorvFileUpload directoryType, FString filePath, bool& found, int64& originalFileSize);

	/**
	 * Cuts a file back to the size that searchUploadLeftovers finds, unless that is 0 or more than the file has, or this
	 * program is uploading the file.
	 * @return always false; the outcome stands in the log.
	 * @note Thread: any.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File Upload",
		meta = (ToolTip =
					"Removes the leftovers of a multipart stream upload from a file. The outcome is written into the log; the return value is always false."))
	static bool repairFileAfterUpload(EHTTPCorvFileUpload directoryType, FString filePath);

	/**
	 * The content type that belongs to a file's extension.
	 * @param mimeType  empty unless success.
	 * @param success  false when there is no such file, or its extension is not in the table.
	 * @note Thread: any.
	 */
	UFUNCTION(
		BlueprintCallable, Category = "Corvane|File Upload", meta = (ToolTip = "Determines the mime type based on the file extension."))
	static void getMimeTypeByFile(EHTTPCorvFileUpload directoryType, FString filePath, FString& mimeType, bool& success);

	/** @return a copy of the table: extension without its dot to content type. Thread: any. */
	UFUNCTION(
		BlueprintCallable, Category = "Corvane|File Upload", meta = (ToolTip = "Returns all known file extensions and their mime types."))
	static TMap<FString, FString> getMimeTypeMap();

	/**
	 * Builds the download of a shared Drive file into memory; the confirmation page that the service shows for large files
	 * is answered on the way. The other parameters are those of CreateHttpRequestGET.
	 * @param downloadID  the file's identifier.
	 * @param optionalFileSizeInByte  size that progress is measured against; 0 = what the page shows.
	 * @param httpRequests  otherHttpRequests and the new record; just otherHttpRequests when the request is refused.
	 * @param requestID  the request's ID, also when it is refused.
	 * @return 0, or 400 when downloadID is empty; the refusal is also broadcast, inside this call, as file information.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET",
		meta = (AutoCreateRefTerm = "otherHttpRequests",
			ToolTip =
				"Download a file from Google Drive.\n@param downloadID Identifier of the file\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response.\n@param optionalFileSizeInByte Size of the file, if it is known"))
	static int32 CreateHttpRequestGoogleDrive(TArray<FhttpRequest> otherHttpRequests, FString downloadID, FString optionalRequestID,
		int64 optionalFileSizeInByte, TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds a request for name and size of a shared Drive file; the result comes as file information, with status 452 when
	 * the service's page cannot be read. The parameters are those of CreateHttpRequestGoogleDrive.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET",
		meta = (AutoCreateRefTerm = "otherHttpRequests",
			ToolTip =
				"Read name and size of a file on Google Drive.\n@param downloadID Identifier of the file\n@param optionalRequestID Your own RequestID. It will be output again in the event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestGoogleDriveFileInfo(TArray<FhttpRequest> otherHttpRequests, FString downloadID, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID);

	/**
	 * Builds the download of a file whose page is known: the page is fetched, and then the link on it. The other parameters
	 * are those of CreateHttpRequestGET.
	 * @param url  of the page, at least 3 characters.
	 * @param httpRequests  otherHttpRequests and the new record; just otherHttpRequests when the request is refused.
	 * @param requestID  the request's ID, also when it is refused.
	 * @return 0, or 400 when the request was refused; the refusal is also broadcast, inside this call.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET",
		meta = (AutoCreateRefTerm = "otherHttpRequests",
			ToolTip =
				"Download the file behind a file page.\n@param url Address of the page\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static int32 CreateHttpRequestAnonfiles(TArray<FhttpRequest> otherHttpRequests, FString url, FString optionalRequestID,
		TArray<FhttpRequest>& httpRequests, FString& requestID);

	/** Scheme and host that the requests for Drive files go to, without a slash at the end. */
	static FString googleDriveBase();
	/** Sends later Drive requests elsewhere. */
	static void setGoogleDriveBase(FString base);

	/**
	 * Adds a header to every later request, of every kind, until it is removed; replaces one of the same name. An empty id or value adds
	 * nothing, which the log says.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Header",
		meta = (ToolTip = "Adds a header to all further HTTP requests.\n@param id Name of the header\n@param value Value of the header"))
	static void addPersistentHTTPRequestHeader(FString id, FString value);

	/** Removes a persistent header; does nothing when there is none of that name. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Header",
		meta = (ToolTip = "Removes a header that was added to all HTTP requests.\n@param id Name of the header"))
	static void removePersistentHTTPRequestHeader(FString id);

	/**
	 * Asks a running request to stop: it then completes as failed. The mark of an ID that does not run waits for it, and
	 * goes when a request of that ID is started.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Requests",
		meta = (ToolTip = "Cancels a running HTTP request.\n@param requestID ID of the request"))
	static void cancelRequest(FString requestID);

	/** @return the text's UTF-8 bytes, those outside A-Z a-z 0-9 - _ . ~ as %XX. Thread: any. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Conversion",
		meta = (ToolTip =
					"Returns a percent-encoded version of the passed in string. Do not use with strings with http::// but for the parameters."))
	static FString urlEncode(FString string);

	/** The same as urlEncode, as a node without execution pins. Thread: any. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Conversion",
		meta = (ToolTip =
					"Returns a percent-encoded version of the passed in string. Do not use with strings with http::// but for the parameters."))
	static FString urlEncodePure(FString string);

	/** @return the decimal digits, with a "-" in front of negative values. Thread: any. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Conversion", meta = (ToolTip = "Converts a 64-bit integer into a decimal string."))
	static FString Int64ToFString(int64 value);

	/** @return bytes divided by 2^20. Thread: any. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Conversion", meta = (ToolTip = "Converts bytes into megabytes (1048576 bytes each)."))
	static float byteToMegabyte(int32 byte);

	/** @return mb times 2^20; 2048 and more wrap around. Thread: any. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Conversion", meta = (ToolTip = "Converts megabytes (1048576 bytes each) into bytes."))
	static int32 megabyteToByte(int32 mb);

	/**
	 * Writes bytes to a file in the background; failures are only logged. Calls are carried out in order.
	 * @param fileAction  what to do when the file exists: replace it or leave it.
	 * @param byteData  at least one byte.
	 * @param filePath  the target; directories that are missing are made.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|File",
		meta = (AutoCreateRefTerm = "byteData", ToolTip = "Writes bytes into a file without blocking the game."))
	static void byteDataToFile(
		EHTTPCorvFileBytesToFileActionType fileAction, TArray<uint8> byteData, EHTTPCorvFileUpload directoryType, FString filePath);

	/**
	 * Starts every record and empties the array. A handler may call it again meanwhile. Each is started with the library
	 * that it was built for, whichever this is.
	 */
	void startRequests(TArray<FhttpRequest>& httpRequests) { startAll(httpRequests); }
	/** The same, when there may be no library but those that the records were built for. */
	static void startAll(TArray<FhttpRequest>& httpRequests);

	/** Makes a node the receiver of the result of a request; replaces an earlier one. */
	void registerUAsyncNodeHttpRequest(FString requestID, UAsyncNodeCorv* node);
	/** Forgets the node of an ID, whichever it is. */
	void unregisterUAsyncNodeHttpRequest(FString requestID);
	/** @return the node that waits for an ID, or null. */
	UAsyncNodeCorv* getUAsyncNodeHttpRequest(FString requestID);
	/** @return the same for a request that begins: its result goes to this node, whichever has the ID by then. */
	TWeakObjectPtr<UAsyncNodeCorv> takeNode(const FString& requestID);
	/** Forgets the node of an ID if it is gone. */
	void forgetDeadNode(const FString& requestID);

	/** Forgets that a script asked to cancel this ID. Thread: any. */
	void dropCancelMark(const FString& requestID);

	/** Ends the running-request entry of an ID if it still is this request, so that nothing keeps its body in memory. */
	void releaseRunningRequest(const FString& requestID, const FHttpRequestPtr& request);

	/** Counts the requests that run; completion objects report to it. Thread: any. */
	FCorvRunList& runList() const { return *runs; }

	/** Which download may write which file. Thread: any. */
	FCorvDownloadTargets& downloadTargetList() const { return *downloadTargets; }

	/** @return the content type of an extension (without its dot, in any case); a general one when it is unknown. Thread: any. */
	FString getMimeTypeInternal(FString extension);

	/** Hands the file of a stream multipart upload that has ended to the repair. Thread: any. */
	void addRequestToTruncateThread(FhttpRequest& request);
	/** @return whether the file at this full path still waits for its repair. Thread: any. */
	bool isFileBlocked(FString path);
	/** The files that uploads have made longer. Thread: any. */
	FCorvChangedFiles& changedFileList() const { return *changedFiles; }
	/** Seconds that the repair gives the HTTP layer to close a file: 2, unless set before the first stream upload ends. Thread: any. */
	void setUploadGracePeriod(double seconds);

	/** @return true while a transfer, a worker or a queued file job is left, so that a program knows when it may end. Thread: any. */
	static bool hasPendingWork();
	/** @return full paths of the files that downloads under way write, whether they are there yet or not. Thread: any. */
	static TArray<FString> filesOfRunningDownloads();

	/** Refuses new requests, cancels the running ones and waits up to 5 seconds for their workers. */
	void shutDown();

	/** @return the objects whose requests may run: every one that has not been freed. Thread: any. */
	static TArray<UCorvaneBPLibrary*> libraries();

	/**
	 * The object constructed last, as a rule the class default object. Never cleared: getCorvaneTarget tells whether it is
	 * still there.
	 */
	static UCorvaneBPLibrary* corv;

private:
	/**
	 * Posts a failed result, always of status 400, to a node or, when it is null, to the event.
	 * @param statusCode  not consulted.
	 */
	static void fireErrorMessageInGameThread(UAsyncNodeCorv* node, int32 statusCode, FString requestID);

	/** @return the thread that writes byte arrays, made on the first call. Thread: any. */
	TSharedPtr<FByteToFileThread> getByteToFileThread();

	/** @return the node that waits for an ID, or null. */
	UAsyncNodeCorv* nodeOf(const FString& requestID);

	/** Starts a record that was built for this library. */
	void startRequest(FhttpRequest& request);
	bool fillRequest(FhttpRequest& request, IHttpRequest& httpRequest);
	void fillRequestGET(const FhttpRequest& request, IHttpRequest& httpRequest);
	/** A GET, with the range that its download asks for. */
	void fillRequestDownload(const FhttpRequest& request, IHttpRequest& httpRequest);
	void fillRequestPOST(const FhttpRequest& request, IHttpRequest& httpRequest);
	bool fillRequestIndividual(const FhttpRequest& request, IHttpRequest& httpRequest);
	/**
	 * Sets verb, URL, headers and body of an upload. A stream multipart upload changes its file on disk here, and the
	 * record names it and its size from then on.
	 * @return false, with the reason in the log and nothing changed, when a file cannot be sent.
	 */
	bool fillRequestUPLOAD(FhttpRequest& request, IHttpRequest& httpRequest);
	bool fillUploadInMemory(const FhttpRequest& request, IHttpRequest& httpRequest);
	bool fillUploadBlank(const FhttpRequest& request, IHttpRequest& httpRequest);
	bool fillUploadStream(FhttpRequest& request, IHttpRequest& httpRequest);
	void fillHeader(const FhttpRequest& request, IHttpRequest& httpRequest);
	static FString postMapToString(const TMap<FString, FString>& map);
	void fillMimeTypeMap();
	bool hasWork();
	void endWrites();
	/** Repairs, without waiting, the files of all uploads that have ended, and of those that still run. */
	void endUploads();

	static TWeakObjectPtr<UCorvaneBPLibrary> corvHandle; // names what corv does

	TMap<FString, FString> persistentHeaders; // game thread only
	TMap<FString, FString> mimeTypeMap; // extension without its dot to type; never changed after construction

	// Never held during a broadcast, a node call, file work or a call into the HTTP module.
	FCriticalSection mapLock;
	TSet<FString> cancelledRequests CORVANE_GUARDED_BY(mapLock);
	TMap<FString, FHttpRequestPtr> runningRequests CORVANE_GUARDED_BY(mapLock);
	TMap<FString, TWeakObjectPtr<UAsyncNodeCorv>> asyncNodes CORVANE_GUARDED_BY(mapLock);

	// Never null, and each with a lock of its own.
	TSharedPtr<FCorvRunList> runs;
	TSharedPtr<FCorvDownloadTargets> downloadTargets;
	TSharedPtr<FCorvChangedFiles> changedFiles; // outlives the repair

	TSharedPtr<FByteToFileThread> byteToFileThread CORVANE_GUARDED_BY(mapLock); // made on first use, like the next
	TSharedPtr<FCorvTruncateUploadedFileThread> truncateThread CORVANE_GUARDED_BY(mapLock);
	double uploadGracePeriodSeconds CORVANE_GUARDED_BY(mapLock) = 2.0;

	FString driveBase = TEXT("https://drive.google.com"); // game thread only
	bool isShuttingDown = false; // game thread only
};
