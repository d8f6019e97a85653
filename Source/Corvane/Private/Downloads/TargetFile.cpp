#include "Downloads/TargetFile.h"

#include "HAL/FileManager.h"
#include "Rules/DownloadRules.h"
#include "Rules/ShownAddress.h"
#include "Runs/Result.h"
#include "Runs/Run.h"
#include "Serialization/Archive.h"
#include "Templates/UniquePtr.h"

namespace CorvaneTargetFile
{
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

	static FString versionOf(const IHttpResponse& Response)
	{
		return CorvaneRules::versionOf(Response.GetHeader(TEXT("ETag")), Response.GetHeader(TEXT("Last-Modified")));
	}
} // namespace CorvaneTargetFile

FCorvTargetFile::FCorvTargetFile(FCorvRun& InRun)
	: run(InRun)
{
}

FCorvDownloadTargets& FCorvTargetFile::targets() const
{
	return run.library()->downloadTargetList();
}

void FCorvTargetFile::claim()
{
	if (!path.IsEmpty() && inheritedDownload == 0) // a later step goes on with what the first one claimed
	{
		targets().claim(path, run.number());
	}
}

int64 FCorvTargetFile::download() const
{
	return inheritedDownload != 0 ? inheritedDownload : run.number();
}

void FCorvTargetFile::release()
{
	targets().release(path, download());
}

FCorvDownloadPermission FCorvTargetFile::askToWrite()
{
	return FCorvDownloadPermission(targets(), path, download());
}

int64 FCorvTargetFile::size() const
{
	return FMath::Max<int64>(IFileManager::Get().FileSize(*path), 0);
}

bool FCorvTargetFile::write(const IHttpResponse& InResponse, bool bInReplace)
{
	const int64 Before = size();
	const FString Kept = bInReplace ? FString() : targets().keptVersions.find(path, Before);
	const bool bWritten = CorvaneTargetFile::tryWrite(path, InResponse.GetContent(), bInReplace);
	if (!bWritten)
	{
		UE_LOG(LogTemp, Error, TEXT("File Download: Can't write into %s "), *path);
	}
	const int64 After = size();
	if (bWritten || After != Before) // also when only some of it was written
	{
		targets().keptVersions.remember(path, After, Kept.IsEmpty() ? CorvaneTargetFile::versionOf(InResponse) : Kept);
	}
	return bWritten;
}

bool FCorvTargetFile::isOfKeptVersion(const IHttpResponse& InResponse) const
{
	const FString Version = targets().keptVersions.find(path, size());
	return Version.IsEmpty() || Version.Equals(CorvaneTargetFile::versionOf(InResponse));
}

bool FCorvTargetFile::isOfOtherVersion(const IHttpResponse& InResponse) const
{
	return CorvaneRules::areOtherVersions(targets().keptVersions.find(path, size()), CorvaneTargetFile::versionOf(InResponse));
}

void FCorvTargetFile::forgetVersion()
{
	targets().keptVersions.forget(path);
}

void FCorvTargetFile::tellIncomplete(const FString& InReason) const
{
	UE_LOG(LogTemp, Error, TEXT("File Download: %s is not complete: %s. Request %s, %s"), *path, *InReason, *run.requestID,
		*CorvaneRules::shownAddress(run.httpRequest.url));
}

void FCorvTargetFile::tellLeftAlone(const FString& InReason) const
{
	UE_LOG(LogTemp, Error, TEXT("File Download: %s is left as it is: %s, and %lld bytes are on disk. Request %s, %s"), *path, *InReason,
		size(), *run.requestID, *CorvaneRules::shownAddress(run.httpRequest.url));
}

FCorvCompletion FCorvTargetFile::failure(const FString& InReason) const
{
	tellIncomplete(InReason);
	return CorvaneResult::noResponse();
}
