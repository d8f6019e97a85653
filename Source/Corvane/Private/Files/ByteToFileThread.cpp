#include "Files/ByteToFileThread.h"

#include "FileFunctionsCorv.h"
#include "HAL/Event.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformProcess.h"
#include "HAL/RunnableThread.h"
#include "Misc/Guid.h"
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
	: wakeUp(FPlatformProcess::GetSynchEventFromPool())
{
	startThread();
}

FByteToFileThread::~FByteToFileThread()
{
	delete thread;
	FPlatformProcess::ReturnSynchEventToPool(wakeUp);
}

void FByteToFileThread::startThread()
{
	thread = FRunnableThread::Create(this, *(TEXT("FByteToFileThread") + FGuid::NewGuid().ToString()));
}

void FByteToFileThread::addJob(FByteToFileJob InJob)
{
	if (!thread)
	{
		startThread(); // the system may have one by now
	}
	if (!thread)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: No thread to write into %s"), *InJob.filePath);
		return;
	}
	++jobsLeft;
	jobQueue.Enqueue(MoveTemp(InJob));
	wakeUp->Trigger();
}

void FByteToFileThread::Stop()
{
	isStopping = true;
	wakeUp->Trigger();
}

uint32 FByteToFileThread::Run()
{
	for (;;)
	{
		const bool bLastRound = isStopping; // read first: a job queued before the stop is still found
		FByteToFileJob Job;
		while (jobQueue.Dequeue(Job))
		{
			write(Job);
			--jobsLeft;
		}
		if (bLastRound)
		{
			return 0;
		}
		wakeUp->Wait();
	}
}

void FByteToFileThread::write(const FByteToFileJob& InJob)
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

FByteToFileThread* UCorvaneBPLibrary::getByteToFileThread()
{
	FScopeLock Lock(&mapLock);
	if (!byteToFileThread)
	{
		byteToFileThread = new FByteToFileThread();
	}
	return byteToFileThread;
}

void UCorvaneBPLibrary::byteDataToFile(
	EHTTPCorvFileBytesToFileActionType InFileAction, TArray<uint8> InByteData, EHTTPCorvFileUpload InDirectoryType, FString InFilePath)
{
	if (UCorvaneBPLibrary* Library = getCorvaneTarget())
	{
		FScopeLock Lock(&Library->mapLock); // the end of the program would else free the thread under this call
		Library->getByteToFileThread()->addJob({MoveTemp(InByteData), InDirectoryType, InFilePath, InFileAction});
	}
}
