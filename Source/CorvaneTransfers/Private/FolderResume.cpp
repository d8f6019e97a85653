#include "FolderResume.h"

#include "Async/Async.h"
#include "Attempts/Address.h"
#include "CorvaneDownloadFile.h"
#include "CorvaneUploadResumable.h"
#include "Files/JournalFile.h"
#include "HAL/FileManager.h"
#include "Misc/Paths.h"
#include "Tus/TusFiles.h"

namespace CorvaneFolderResume
{
	static const FString Ending = TEXT(".corvjournal");

	/** A transfer whose journal is there. */
	struct FFound
	{
		/** Empty = there is none. */
		FString Address;
		/** The target of a download, the source of an upload. */
		FString File;
	};

	static FFound ReadDownload(const FString& Path)
	{
		const FCorvaneJournal Journal = FCorvaneJournalFile::Peek(Path);
		return Journal.bHasSource ? FFound{Journal.Source.Address, Path.LeftChop(Ending.Len())} : FFound();
	}

	/** An endpoint with a query, which journals do not tell, is another one: only its owner can go on with it. */
	static FFound ReadUpload(const FString& Path)
	{
		const FCorvaneTusJournal Journal = FCorvaneTusJournal::Read(FCorvaneLineFile::ReadLines(Path));
		const FString Name = FCorvaneTusJournal::FileName(Journal.Endpoint, Journal.File.Path);
		const bool bTellsAll = !Journal.Upload.Address.IsEmpty() && Name.Equals(FPaths::GetCleanFilename(Path), ESearchCase::CaseSensitive);
		return bTellsAll ? FFound{Journal.Endpoint, Journal.File.Path} : FFound();
	}

	static TArray<FFound> Search(const FString& Folder, const FString& OnlyOrigin, FFound (*Read)(const FString& Path))
	{
		TArray<FString> Names;
		IFileManager::Get().FindFiles(Names, *Folder, nullptr);
		TArray<FFound> All;
		for (const FString& Name : Names)
		{
			const FFound Found = Name.EndsWith(*Ending, ESearchCase::CaseSensitive) ? Read(Folder + TEXT("/") + Name) : FFound();
			const bool bWanted = OnlyOrigin.IsEmpty() || CorvaneAddress::IsSameOrigin(Found.Address, OnlyOrigin);
			if (!Found.Address.IsEmpty() && bWanted)
			{
				All.Add(Found);
			}
		}
		return All;
	}

	static void Start(const TSharedRef<FCorvaneQueueRun>& Queue, const FString& Folder, const FString& OnlyOrigin,
		FFound (*Read)(const FString& Path), const TFunction<void(const FFound&)>& StartOne)
	{
		Queue->ExpectMore();
		AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
			[Queue, Folder, OnlyOrigin, Read, StartOne]
			{
				const TArray<FFound> All = Search(Folder, OnlyOrigin, Read);
				AsyncTask(ENamedThreads::GameThread,
					[Queue, All, StartOne]
					{
						for (const FFound& Found : All)
						{
							StartOne(Found);
						}
						Queue->NoMoreToCome();
					});
			});
	}
} // namespace CorvaneFolderResume

void CorvaneFolderResume::Downloads(
	const TSharedRef<FCorvaneQueueRun>& Queue, const FString& Folder, const FCorvaneDownloadOptions& Options, const FString& OnlyOrigin)
{
	Start(Queue, FPaths::ConvertRelativePathToFull(Folder), OnlyOrigin, &ReadDownload,
		[Options](const FFound& Found) { UCorvaneDownloadFile::Resume(Found.Address, Found.File, Options); });
}

void CorvaneFolderResume::Uploads(
	const TSharedRef<FCorvaneQueueRun>& Queue, const FCorvaneResumableOptions& Options, const FString& OnlyOrigin)
{
	Start(Queue, FCorvaneTusFiles::JournalFolder(Options.JournalFolder), OnlyOrigin, &ReadUpload,
		[Options](const FFound& Found) { UCorvaneUploadResumable::Start(Found.Address, Found.File, Options, UCorvaneTransfer::FTell()); });
}
