#include "CorvaneBPLibrary.h"

#include "Rules/Multipart.h"
#include "Uploads/UploadBody.h"
#include "Uploads/UploadFile.h"

bool UCorvaneBPLibrary::fillRequestUPLOAD(FhttpRequest& InOutRequest, IHttpRequest& OutHttpRequest)
{
	const bool bPost = InOutRequest.requestType == EHTTPCorvRequestType::POST_UPLOAD;
	OutHttpRequest.SetVerb(bPost ? TEXT("POST") : TEXT("PUT"));
	OutHttpRequest.SetURL(InOutRequest.url);
	switch (InOutRequest.requestType)
	{
	case EHTTPCorvRequestType::POST_UPLOAD:
	case EHTTPCorvRequestType::PUT:
		return fillUploadInMemory(InOutRequest, OutHttpRequest);
	case EHTTPCorvRequestType::PUT_STREAM_MP:
	case EHTTPCorvRequestType::PUT_STREAM_COPY:
		return fillUploadStream(InOutRequest, OutHttpRequest);
	case EHTTPCorvRequestType::PUT_STREAM_BLANK:
		return fillUploadBlank(InOutRequest, OutHttpRequest);
	default:
		return false;
	}
}

bool UCorvaneBPLibrary::fillUploadBlank(const FhttpRequest& InRequest, IHttpRequest& OutHttpRequest)
{
	FCorvUploadFile File;
	if (!CorvaneUpload::find(*this, InRequest.directoryType, InRequest.filePath, File))
	{
		return false;
	}
	OutHttpRequest.SetHeader(TEXT("fileid"), CorvaneRules::safeHeaderValue(InRequest.fileID));
	OutHttpRequest.SetHeader(TEXT("filename"), CorvaneRules::safeHeaderValue(File.name));
	OutHttpRequest.SetHeader(TEXT("fileformat"), CorvaneRules::safeHeaderValue(File.extension));
	OutHttpRequest.SetHeader(TEXT("mimetype"), File.mimeType);
	return CorvaneUpload::sendFile(InRequest, File.path, OutHttpRequest);
}
