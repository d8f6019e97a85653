#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Guid.h"
#include "Misc/Paths.h"
#include "Rules/Multipart.h"
#include "Rules/UploadTail.h"
#include "Serialization/Archive.h"
#include "Uploads/ChangedFiles.h"
#include "Uploads/UploadBody.h"
#include "Uploads/UploadFile.h"
#include "Uploads/UploadLeftovers.h"
#include "Uploads/UploadRepair.h"

namespace CorvaneStreamUpload
{
	static bool isCopy(const FhttpRequest& Record)
	{
		return Record.requestType == EHTTPCorvRequestType::PUT_STREAM_COPY;
	}

	/** @return the path of the file that is going to be sent: the user's own, or that of a copy, which may have failed. */
	static FString pathToSend(const FhttpRequest& Record, const FString& Path)
	{
		if (!isCopy(Record))
		{
			return Path;
		}
		const FString CopyPath = CorvaneRules::uploadCopyPath(Path, FGuid::NewGuid().ToString());
		FPlatformFileManager::Get().GetPlatformFile().CopyFile(*CopyPath, *Path);
		return CopyPath;
	}

	/** A copy that a full disk has cut short looks made until its size is asked for. */
	static bool isWhole(const FString& PathToSend, const FString& Path)
	{
		return IFileManager::Get().FileSize(*PathToSend) == IFileManager::Get().FileSize(*Path);
	}

	/** @return null also for a missing file: the writer would make one, and an empty file would be uploaded. */
	static FArchive* openToAppend(const FString& Path)
	{
		return FPaths::FileExists(Path) ? IFileManager::Get().CreateFileWriter(*Path, FILEWRITE_Append | FILEWRITE_AllowRead) : nullptr;
	}

	/** Sets the headers, in one of which the body begins. @return the bytes that end it. */
	static TArray<uint8> describe(const FhttpRequest& Record, const FCorvUploadFile& File, IHttpRequest& HttpRequest)
	{
		const FString Token = CorvaneRules::boundaryToken(Record.originalFileSize);
		HttpRequest.SetHeader(TEXT("Content-Type"), CorvaneRules::multipartType(Token));
		// The last header to be set, so that the transport puts no other one after it.
		HttpRequest.SetHeader(TEXT("Content-Length"),
			CorvaneRules::streamLengthHeader(Token, Record.fileID, File.name, File.mimeType, Record.originalFileSize));
		return CorvaneRules::fstringToByteArray(CorvaneRules::closingDelimiter(Token));
	}

	static bool write(FArchive& Writer, TArray<uint8>& Bytes)
	{
		Writer.Serialize(Bytes.GetData(), Bytes.Num());
		return Writer.Close();
	}

	/** Makes the file of the record longer by the tail of the body and hands it to the engine request. */
	static bool send(UCorvaneBPLibrary& Library, FhttpRequest& Record, const FCorvUploadFile& File, IHttpRequest& HttpRequest)
	{
		const TUniquePtr<FArchive> Writer(openToAppend(Record.filePath));
		const int64 Size = Writer.IsValid() ? Writer->TotalSize() : -1;
		// Asked once more after the open, which keeps other writers out where the system knows how: another program may
		// have begun an upload of the file since, and a copy may have been made of what that program did.
		if (Size < 0 || CorvaneUpload::endsInOwnTail(Record.filePath))
		{
			return false;
		}
		Record.originalFileSize = Size;
		Record.requestCompleteObject()->setRequestStruct(Record); // whoever repairs the file asks there
		TArray<uint8> Tail = describe(Record, File, HttpRequest);
		if (!CorvaneRules::needsRepair(Record))
		{
			CorvaneUpload::sendBytes(
				Record, MoveTemp(Tail), HttpRequest); // an empty file: no repair would know it from one of size 0, so it is left alone
			return true;
		}
		Library.changedFileList().begin(Record);
		return write(*Writer, Tail) && CorvaneUpload::sendFile(Record, Record.filePath, HttpRequest);
	}

	/** The user's file becomes again what it was; a copy goes the way of all copies. */
	static void undo(UCorvaneBPLibrary& Library, FhttpRequest& Record)
	{
		if (!CorvaneRules::needsRepair(Record))
		{
			return; // nothing was written
		}
		if (!isCopy(Record))
		{
			CorvaneUpload::cutBack(Record.filePath, Record.originalFileSize);
			Library.changedFileList().forget(Record.filePath);
		}
		else if (FPaths::FileExists(Record.filePath))
		{
			Library.addRequestToTruncateThread(Record);
		}
	}
} // namespace CorvaneStreamUpload

bool UCorvaneBPLibrary::fillUploadStream(FhttpRequest& InOutRequest, IHttpRequest& OutHttpRequest)
{
	FCorvUploadFile File;
	if (!CorvaneUpload::find(*this, InOutRequest.directoryType, InOutRequest.filePath, File))
	{
		return false;
	}
	InOutRequest.originalFileSize = 0; // of an earlier upload, perhaps; to that size nothing must be undone
	InOutRequest.filePath = CorvaneStreamUpload::pathToSend(InOutRequest, File.path);
	if (CorvaneStreamUpload::isWhole(InOutRequest.filePath, File.path) &&
		CorvaneStreamUpload::send(*this, InOutRequest, File, OutHttpRequest))
	{
		return true;
	}
	CorvaneUpload::logStillOpen(InOutRequest.filePath);
	CorvaneStreamUpload::undo(*this, InOutRequest);
	return false;
}
