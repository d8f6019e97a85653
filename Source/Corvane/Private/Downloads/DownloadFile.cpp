#include "Downloads/DownloadFile.h"

#include "HAL/FileManager.h"
#include "Serialization/Archive.h"
#include "Templates/UniquePtr.h"

namespace CorvaneDownloadFile
{
	static FString rangeHeader(const IHttpResponse& Response)
	{
		const FString Value = Response.GetHeader(TEXT("Content-Range"));
		return Value.Len() < 2 ? Response.GetHeader(TEXT("content-range")) : Value; // not every platform ignores the case
	}

	static bool tryWrite(const FString& Path, const TArray<uint8>& Bytes, bool bReplace)
	{
		const TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path, bReplace ? FILEWRITE_None : FILEWRITE_Append));
		if (!Writer.IsValid())
		{
			return false;
		}
		Writer->Seek(Writer->TotalSize());
		Writer->Serialize(const_cast<uint8*>(Bytes.GetData()), Bytes.Num()); // a writer only reads them
		return Writer->Close();
	}
} // namespace CorvaneDownloadFile

int64 CorvaneDownload::sizeOnDisk(const FString& Path)
{
	return FMath::Max<int64>(IFileManager::Get().FileSize(*Path), 0);
}

FCorvDownloadAnswer CorvaneDownload::readAnswer(const IHttpResponse& Response, int32 StatusCode)
{
	return {StatusCode, CorvaneRules::contentRange(CorvaneDownloadFile::rangeHeader(Response)), Response.GetContent().Num()};
}

bool CorvaneDownload::write(const FString& Path, const TArray<uint8>& Bytes, bool bReplace)
{
	const bool bWritten = CorvaneDownloadFile::tryWrite(Path, Bytes, bReplace);
	if (!bWritten)
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: Can't write into %s "), *Path);
	}
	return bWritten;
}
