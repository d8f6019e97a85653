#include "Queue/FolderResume.h"

#include "Async/Async.h"
#include "Attempts/Address.h"
#include "CorvaneDownloadFile.h"
#include "Files/JournalFile.h"
#include "HAL/FileManager.h"
#include "Misc/Paths.h"

namespace CorvaneFolderResume
{
	/** A download whose journal is there. */
	struct FFound
	{
		FString Address;
		FString Target;
	};

	static TArray<FFound> Search(const FString& Folder, const FString& OnlyOrigin)
	{
		const FString Ending = TEXT(".corvjournal");
		TArray<FString> Names;
		IFileManager::Get().FindFiles(Names, *Folder, nullptr);
		TArray<FFound> All;
		for (const FString& Name : Names)
		{
			const FString Path = Folder + TEXT("/") + Name;
			if (!Name.EndsWith(*Ending, ESearchCase::CaseSensitive))
			{
				continue;
			}
			const FCorvaneJournal Journal = FCorvaneJournalFile::Peek(Path);
			const bool bWanted = OnlyOrigin.IsEmpty() || CorvaneAddress::IsSameOrigin(Journal.Source.Address, OnlyOrigin);
			if (Journal.bHasSource && bWanted)
			{
				All.Add(FFound{Journal.Source.Address, Path.LeftChop(Ending.Len())});
			}
		}
		return All;
	}

	static void StartAll(FCorvaneQueueRun& Queue, const TArray<FFound>& All, const FCorvaneDownloadOptions& Options)
	{
		for (const FFound& Found : All)
		{
			UCorvaneDownloadFile::Resume(Found.Address, Found.Target, Options);
		}
		Queue.NoMoreToCome();
	}
} // namespace CorvaneFolderResume

void CorvaneFolderResume::Start(
	const TSharedRef<FCorvaneQueueRun>& Queue, const FString& Folder, const FCorvaneDownloadOptions& Options, const FString& OnlyOrigin)
{
	Queue->ExpectMore();
	const FString FullFolder = FPaths::ConvertRelativePathToFull(Folder);
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Queue, FullFolder, Options, OnlyOrigin]
		{
			const TArray<FFound> All = Search(FullFolder, OnlyOrigin);
			AsyncTask(ENamedThreads::GameThread, [Queue, All, Options] { StartAll(*Queue, All, Options); });
		});
}
