#include "Files/ByteToFileThread.h"

#include "FileFunctionsCorv.h"
#include "HAL/FileManager.h"
#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"
#include "Serialization/Archive.h"

namespace CorvaneByteToFile
{
	static void logCannotWrite(const FString& Path)
	{
		UE_LOG(LogTemp, Error, TEXT("ByteDataToFile: Can't write into %s "), *Path);
	}

	/** Removes an old file if it may be replaced. @return false when the new bytes must not be written; the log says why. */
	static bool makeRoom(const FString& Path, EHTTPCorvFileBytesToFileActionType Action)
	{
		if (!FPaths::FileExists(Path))
		{
			return true;
		}
		if (Action == EHTTPCorvFileBytesToFileActionType::E_NOT_OVERWRITE)
		{
			UE_LOG(LogTemp, Warning, TEXT("UCorvaneBPLibrary: File exist. Cancel write to file."));
			return false;
		}
		if (!IFileManager::Get().Delete(*Path))
		{
			logCannotWrite(Path); // appending would leave the old bytes in front of the new ones
			return false;
		}
		return true;
	}

	/** A part of the bytes must not pass for the file: E_NOT_OVERWRITE would keep it for ever. */
	static bool append(const FString& Path, const TArray<uint8>& Bytes)
	{
		TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path, FILEWRITE_Append));
		if (!Writer.IsValid())
		{
			return false;
		}
		Writer->Serialize(const_cast<uint8*>(Bytes.GetData()), Bytes.Num());
		const bool bDone = Writer->Close();
		Writer.Reset(); // some systems delete no open file
		if (!bDone)
		{
			IFileManager::Get().Delete(*Path);
		}
		return bDone;
	}
} // namespace CorvaneByteToFile

FByteToFileThread::FByteToFileThread()
	: TCorvQueueThread(TEXT("FByteToFileThread"))
{
}

FByteToFileThread::~FByteToFileThread()
{
	finish();
}

void FByteToFileThread::work(FByteToFileJob& InJob)
{
	if (InJob.byteData.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Empty byteData Array."));
		return;
	}
	if (InJob.filePath.IsEmpty())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: FilePath not set."));
		return;
	}
	const FString Path = UFileFunctionsCorv::getCleanDirectory(
		static_cast<EFileFunctionsCorvDirectoryType>(InJob.directoryType), InJob.filePath); // the same names and numbers
	if (CorvaneByteToFile::makeRoom(Path, InJob.fileAction) && !CorvaneByteToFile::append(Path, InJob.byteData))
	{
		CorvaneByteToFile::logCannotWrite(Path);
	}
}

TSharedPtr<FByteToFileThread> UCorvaneBPLibrary::getByteToFileThread()
{
	FScopeLock Lock(&mapLock);
	if (!byteToFileThread)
	{
		byteToFileThread = MakeShared<FByteToFileThread>();
	}
	return byteToFileThread;
}

void UCorvaneBPLibrary::byteDataToFile(
	EHTTPCorvFileBytesToFileActionType InFileAction, TArray<uint8> InByteData, EHTTPCorvFileUpload InDirectoryType, FString InFilePath)
{
	if (UCorvaneBPLibrary* Library = getCorvaneTarget())
	{
		Library->getByteToFileThread()->addJob({MoveTemp(InByteData), InDirectoryType, InFilePath, InFileAction});
	}
}
