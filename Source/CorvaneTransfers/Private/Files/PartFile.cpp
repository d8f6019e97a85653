#include "Files/PartFile.h"

#include "Files/FileBlocks.h"
#include "Files/FileFaults.h"
#include "Files/HeldFile.h"
#include "Files/TargetReplacement.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/Paths.h"
#include "Misc/Timespan.h"

namespace CorvanePartFile
{
	/** Each waits for the disk, so they come by time: what can be lost is what two seconds brought. */
	static constexpr int64 TicksPerCheckpoint = 2 * ETimespan::TicksPerSecond;

	static IPlatformFile& Files()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}

	/** Up to here a file is soon there, and soon fetched again. */
	static constexpr int64 ShortFile = 1 << 20;
} // namespace CorvanePartFile

FCorvaneOpenedPart FCorvanePartFile::Open(const FString& InTarget, const FString& Address, bool bResume, ECorvaneHashKind InHashKind)
{
	Close();
	Hash = FCorvaneHashOnTheWay(InHashKind);
	Journal = FCorvaneJournalFile();
	Source = FCorvaneSourceFacts();
	Length = 0;
	VouchedLength = 0;
	FCorvaneOpenedPart Opened;
	Opened.Result = TakeTarget(InTarget);
	if (Opened.Result.IsOk() && Journal.Told().bWhole)
	{
		CorvaneTargetReplacement::Heal(Target);
	}
	if (Opened.Result.IsOk() && bResume)
	{
		Resume(Address, Opened);
	}
	if (!Opened.Result.IsOk())
	{
		LetGo();
	}
	return Opened;
}

bool FCorvanePartFile::MayHaveBytes(const FString& InTarget)
{
	return CorvanePartFile::Files().FileExists(*JournalOf(FPaths::ConvertRelativePathToFull(InTarget)));
}

FCorvaneFileResult FCorvanePartFile::TakeTarget(const FString& InTarget)
{
	using namespace CorvaneFileFaults;
	if (FPaths::GetCleanFilename(InTarget).IsEmpty())
	{
		return Failed(ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("\"%s\" names no file."), *InTarget));
	}
	Target = FPaths::ConvertRelativePathToFull(InTarget);
	if (!Claim.Take(Target))
	{
		return Failed(ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("Another transfer has %s for its target."), *Target));
	}
	const FString Folder = FPaths::GetPath(Target);
	if (!CorvanePartFile::Files().CreateDirectoryTree(*Folder))
	{
		return Failed(ECorvaneTransferOutcome::CannotWrite, FString::Printf(TEXT("The folder %s cannot be made."), *Folder));
	}
	FCorvaneFileResult Fault = CorvaneFileFaults::CannotBeReplaced(Target);
	Fault = Fault.IsOk() ? FolderInTheWay(JournalName()) : Fault;
	return Fault.IsOk() ? LockTarget() : Fault;
}

FCorvaneFileResult FCorvanePartFile::LockTarget()
{
	return CorvanePartFile::Files().FileExists(*JournalName()) ? Journal.Open(JournalName()) : LockByPart();
}

/** What was opened may have been moved, or deleted, by whoever had it until now: then it is not the part file, and is not touched. */
FCorvaneFileResult FCorvanePartFile::LockByPart()
{
	IPlatformFile& Files = CorvanePartFile::Files();
	Part.Reset(Files.OpenWrite(*PartName(), true, true));
	if (!Part.IsValid())
	{
		return CorvaneFileFaults::OpenFailed(PartName());
	}
	if (Files.FileSize(*PartName()) == Part->Size() && !Files.FileExists(*JournalName()))
	{
		return FCorvaneFileResult();
	}
	Part.Reset();
	return CorvaneFileFaults::Failed(ECorvaneTransferOutcome::Refused, FString::Printf(TEXT("Another program transfers to %s."), *Target));
}

/** From here on the journal is what keeps others away, and tells of the source. */
FCorvaneFileResult FCorvanePartFile::NeedJournal(const FCorvaneSourceFacts& Facts)
{
	if (Journal.IsOpen())
	{
		return FCorvaneFileResult();
	}
	const FCorvaneFileResult Fault = Journal.Open(JournalName());
	return Fault.IsOk() ? Journal.AppendWithoutWaiting(FCorvaneJournal::SourceLine(Facts)) : Fault;
}

void FCorvanePartFile::Resume(const FString& Address, FCorvaneOpenedPart& Opened)
{
	const FCorvaneJournal& Told = Journal.Told();
	const bool bHasPart = Part.IsValid() ? Part->Size() > 0 : CorvanePartFile::Files().FileExists(*PartName());
	const bool bHasWhole = !bHasPart && HasTakenPlace();
	if (!bHasPart && !bHasWhole)
	{
		return;
	}
	Opened.WhyFromStart = WhyUseless(Address, bHasWhole ? Target : PartName());
	if (!Opened.WhyFromStart.IsEmpty())
	{
		return;
	}
	Opened.Length = Told.Kept.Length;
	Opened.Source = Told.Source;
	Opened.Result = bHasPart ? TakePart() : FCorvaneFileResult();
	if (!Opened.Result.IsOk())
	{
		return;
	}
	bWholeAlready = bHasWhole;
	Source = Told.Source;
	Length = VouchedLength = Told.Kept.Length;
	Opened.bWholeAlready = bWholeAlready;
}

/**
 * Whether the target is the whole file that the journal speaks of. Without a part file either it is, or somebody has deleted the
 * part; only where the old target was another file can the looks of the target tell.
 */
bool FCorvanePartFile::HasTakenPlace() const
{
	const FCorvaneJournal& Told = Journal.Told();
	return Told.bWhole && Told.bToldApart && CorvaneFileBlocks::IsFile(Target, Told.Kept);
}

FString FCorvanePartFile::WhyUseless(const FString& Address, const FString& File) const
{
	const FCorvaneJournal& Told = Journal.Told();
	if (!Told.bHasSource)
	{
		return TEXT("There are bytes on disk, but no journal that can be read.");
	}
	if (!Told.Source.Address.Equals(Address, ESearchCase::CaseSensitive))
	{
		return TEXT("The bytes on disk come from another address.");
	}
	const bool bVouchedFor = Told.bWhole || Told.Kept.Length > 0;
	return bVouchedFor && CorvaneFileBlocks::HasStart(File, Told.Kept) ? TEXT("")
																	   : TEXT("The bytes on disk are not those that the journal tells of.");
}

/** Opens the part file and cuts off what the journal does not vouch for. */
FCorvaneFileResult FCorvanePartFile::TakePart()
{
	const FCorvaneJournal& Told = Journal.Told();
	const FCorvaneFileResult Fault = OpenPart(Told.Kept.Length);
	return Fault.IsOk() ? CorvaneFileFaults::NotEnoughRoom(FPaths::GetPath(Target), Told.Source.Total - Told.Kept.Length) : Fault;
}

FCorvaneFileResult FCorvanePartFile::OpenPart(int64 NewLength)
{
	if (!Part.IsValid())
	{
		Part.Reset(CorvanePartFile::Files().OpenWrite(*PartName(), true, true));
	}
	if (!Part.IsValid())
	{
		return CorvaneFileFaults::OpenFailed(PartName());
	}
	LastCheckpoint = FDateTime::UtcNow();
	return Shorten(NewLength) ? FCorvaneFileResult() : CorvaneFileFaults::WriteFailed(PartName(), 0);
}

bool FCorvanePartFile::Shorten(int64 NewLength)
{
	Length = NewLength;
	return Part->Truncate(NewLength) && Part->Seek(NewLength);
}

FCorvaneFileResult FCorvanePartFile::StartOver(const FCorvaneSourceFacts& NewSource)
{
	const int64 RoomInPart = Part.IsValid() ? Part->Size() : CorvanePartFile::Files().FileSize(*PartName());
	FCorvaneFileResult Fault =
		CorvaneFileFaults::NotEnoughRoom(FPaths::GetPath(Target), NewSource.Total - FMath::Max<int64>(RoomInPart, 0));
	Fault = Fault.IsOk() ? TellSource(NewSource) : Fault; // before these bytes go
	if (Fault.IsOk())
	{
		bWholeAlready = false;
		Source = NewSource;
		VouchedLength = 0;
		Fault = OpenPart(0);
		Hash.Begin();
	}
	return Fault;
}

FCorvaneFileResult FCorvanePartFile::TellSource(const FCorvaneSourceFacts& NewSource)
{
	const bool bIsShort = NewSource.Total >= 0 && NewSource.Total <= CorvanePartFile::ShortFile;
	if (!Journal.IsOpen())
	{
		return bIsShort ? FCorvaneFileResult() : NeedJournal(NewSource);
	}
	const TArray<uint8> Line = FCorvaneJournal::SourceLine(NewSource);
	const bool bBytesAreVouchedFor = VouchedLength > 0 || Journal.Told().Kept.Length > 0;
	return bBytesAreVouchedFor ? Journal.Append(Line) : Journal.AppendWithoutWaiting(Line);
}

FCorvaneFileResult FCorvanePartFile::Append(const uint8* Bytes, int64 Count)
{
	// Where a write that failed has left bytes, these take their place; what is left of them in the end, Finish cuts off.
	if (!Part->Seek(Length) || !Part->Write(Bytes, Count))
	{
		return CorvaneFileFaults::WriteFailed(PartName(), Count);
	}
	Hash.Update(Length, Bytes, Count);
	EarlyFlush.Note(PartName(), Count);
	Length += Count;
	return IsCheckpointDue() ? Checkpoint() : FCorvaneFileResult();
}

bool FCorvanePartFile::IsCheckpointDue() const
{
	const int64 Ticks = FDateTime::UtcNow().GetTicks() - LastCheckpoint.GetTicks();
	const bool bClockWasSetBack = Ticks < 0;
	return Ticks >= CorvanePartFile::TicksPerCheckpoint || bClockWasSetBack;
}

FCorvaneFileResult FCorvanePartFile::Checkpoint()
{
	LastCheckpoint = FDateTime::UtcNow();
	if (Length == VouchedLength)
	{
		return FCorvaneFileResult();
	}
	FCorvaneFileResult Fault = FlushPart();
	FCorvaneFileStart Kept;
	if (Fault.IsOk() && !CorvaneFileBlocks::DescribeStart(PartName(), Length, Kept))
	{
		Fault = CorvaneFileFaults::CannotRead(PartName());
	}
	Fault = Fault.IsOk() ? NeedJournal(Source) : Fault;
	Fault = Fault.IsOk() ? Journal.Append(FCorvaneJournal::KeptLine(Kept)) : Fault;
	VouchedLength = Fault.IsOk() ? Length : VouchedLength;
	return Fault;
}

FCorvaneFileResult FCorvanePartFile::FlushPart()
{
	if (Part->Flush(true))
	{
		return CheckSizeOnDisk();
	}
	// The system may count lost bytes as written from here on, so a later flush would vouch for them.
	const int64 LostBytes = Length - VouchedLength;
	Shorten(VouchedLength);
	return CorvaneFileFaults::WriteFailed(PartName(), LostBytes);
}

/** Behind a flush: a handle that is wrong about where it has written must not vouch for it. */
FCorvaneFileResult FCorvanePartFile::CheckSizeOnDisk() const
{
	// A shorter one may be what a file server remembers of it.
	const bool bIsLonger = CorvanePartFile::Files().FileSize(*PartName()) > Part->Size();
	return bIsLonger ? CorvaneFileFaults::WriteFailed(PartName(), 0) : FCorvaneFileResult();
}

FCorvaneFileResult FCorvanePartFile::ReadTail(int64 Count, TArray<uint8>& Tail) const
{
	const int64 Number = FMath::Min(Count, Length);
	return CorvaneFileBlocks::Read(PartName(), Length - Number, Number, Tail) ? FCorvaneFileResult()
																			  : CorvaneFileFaults::CannotRead(PartName());
}

int64 FCorvanePartFile::Close()
{
	if (Part.IsValid())
	{
		Checkpoint();
	}
	if (VouchedLength == 0 && (Part.IsValid() || IsEmptyRest()))
	{
		Discard();
	}
	LetGo();
	return VouchedLength;
}

/** Whether an earlier run has begun and got no further; bytes of another address, or of a journal that cannot be read, are not ours. */
bool FCorvanePartFile::IsEmptyRest() const
{
	const FCorvaneJournal& Told = Journal.Told();
	return Journal.IsOpen() && Told.bHasSource && Told.Kept.Length == 0 && !Told.bWhole;
}

void FCorvanePartFile::Discard()
{
	if (Journal.IsOpen())
	{
		ClosePart();
		CorvanePartFile::Files().DeleteFile(*PartName());
		Journal.Delete();
	}
	else if (Part.IsValid())
	{
		EarlyFlush.Stop();
		CorvaneHeldFile::Delete(Part, PartName());
	}
	VouchedLength = 0;
	LetGo();
}

void FCorvanePartFile::ClosePart()
{
	EarlyFlush.Stop();
	Part.Reset();
}

void FCorvanePartFile::LetGo()
{
	ClosePart();
	Journal.Close();
	Claim.Release();
	bWholeAlready = false;
}
