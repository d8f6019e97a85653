#include "Download/DownloadFiles.h"

#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"

void FCorvaneDownloadFiles::Look(const FString& Target, TUniqueFunction<void(bool, FDateTime)> Tell)
{
	Do(
		[Target = FPaths::ConvertRelativePathToFull(Target), Tell = MoveTemp(Tell)](FCorvaneDownloadFiles&)
		{
			IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
			const bool bExists = Files.FileExists(*Target);
			Tell(bExists, bExists ? Files.GetTimeStamp(*Target) : FDateTime::MinValue());
		});
}

void FCorvaneDownloadFiles::LookForRest(const FString& Target, const FString& Address, TUniqueFunction<void(int64, int64)> Tell)
{
	Do(
		[Target = FString(Target), Address = FString(Address), Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self)
		{
			FCorvaneOpenedPart Found;
			if (FCorvanePartFile::MayHaveBytes(Target))
			{
				Found = Self.Part.Open(Target, Address, true);
				Self.Part.Close();
			}
			const bool bBeside = Found.Length > 0 && !Found.bWholeAlready;
			Tell(bBeside ? Found.Length : 0, bBeside ? Found.Source.Total : -1);
		});
}

void FCorvaneDownloadFiles::Open(const FString& Target, const FString& Address, bool bResume, ECorvaneHashKind HashKind,
	TUniqueFunction<void(const FCorvaneOpenedPart&)> Tell)
{
	Do([Target = FString(Target), Address = FString(Address), bResume, HashKind, Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self)
		{ Tell(Self.Part.Open(Target, Address, bResume, HashKind)); });
}

void FCorvaneDownloadFiles::Secure()
{
	Do([](FCorvaneDownloadFiles& Self) { Self.Part.Checkpoint(); }); // what a disk takes not now it may take later
}

void FCorvaneDownloadFiles::Finish(const FCorvaneFinishWish& Wish, TUniqueFunction<void(const FCorvaneFinished&)> Tell)
{
	Do([Wish = FCorvaneFinishWish(Wish), Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self) { Tell(Self.FinishNow(Wish)); });
}

FCorvaneFinished FCorvaneDownloadFiles::FinishNow(const FCorvaneFinishWish& Wish)
{
	GiveMemoryBack();
	return Part.Finish(Wish);
}

void FCorvaneDownloadFiles::Close(TUniqueFunction<void(int64)> Tell)
{
	Do([Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self) { Tell(Self.Part.Close()); });
}

void FCorvaneDownloadFiles::Discard(TUniqueFunction<void()> Tell)
{
	Do(
		[Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self)
		{
			Self.Part.Discard();
			Tell();
		});
}

void FCorvaneDownloadFiles::BeginAttempt()
{
	Attempt = FCorvaneAttemptFiles();
	Buffer.Reopen();
}

void FCorvaneDownloadFiles::ReadTail(int64 Compare, TUniqueFunction<void(TArray<uint8>&&, const FCorvaneFileResult&)> Tell)
{
	Do(
		[Compare, Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self)
		{
			TArray<uint8> Tail;
			const FCorvaneFileResult Read = Self.Part.ReadTail(Compare, Tail);
			Tell(MoveTemp(Tail), Read);
		});
}

void FCorvaneDownloadFiles::StartOver(const FCorvaneSourceFacts& Source)
{
	Do([Source = FCorvaneSourceFacts(Source)](FCorvaneDownloadFiles& Self) { Self.Note(Self.Part.StartOver(Source)); });
}

bool FCorvaneDownloadFiles::Put(const uint8* Bytes, int64 Number)
{
	bool bFirst = false;
	if (!Buffer.Put(Bytes, Number, bFirst))
	{
		return false;
	}
	if (bFirst)
	{
		Do([](FCorvaneDownloadFiles& Self) { Self.WriteWaiting(); });
	}
	return true;
}

void FCorvaneDownloadFiles::EndAttempt(TUniqueFunction<void(const FCorvaneAttemptFiles&)> Tell)
{
	Do(
		[Tell = MoveTemp(Tell)](FCorvaneDownloadFiles& Self)
		{
			Self.WriteWaiting();
			Self.Attempt.Length = Self.Part.GetLength();
			Tell(Self.Attempt);
		});
}

void FCorvaneDownloadFiles::WriteWaiting()
{
	while (Attempt.Result.IsOk() && Buffer.Take(Writing))
	{
		const int64 Before = Part.GetLength();
		Note(Part.Append(Writing.GetData(), Writing.Num()));
		Attempt.Written += Part.GetLength() - Before;
	}
}

/** Here, where it keeps nobody waiting: this object may end on the game thread. */
void FCorvaneDownloadFiles::GiveMemoryBack()
{
	Buffer.Close();
	Writing.Empty();
}

/** After a failure nothing more is written, and whoever brings bytes hears it. */
void FCorvaneDownloadFiles::Note(const FCorvaneFileResult& Result)
{
	if (Attempt.Result.IsOk() && !Result.IsOk())
	{
		Attempt.Result = Result;
		Buffer.Close();
		TellFailure();
	}
}
