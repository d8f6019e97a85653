#include "FileFunctionsCorv.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Serialization/Archive.h"

namespace CorvaneReadAndWrite
{
	/** Takes away what a failed write left: all that stands after the bytes that a file had, or a file that was not there. */
	static void undo(const FString& Path, bool bWasThere, int64 Size)
	{
		IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
		if (!bWasThere)
		{
			Files.DeleteFile(*Path);
			return;
		}
		constexpr bool bAppend = true;
		const TUniquePtr<IFileHandle> File(Files.OpenWrite(*Path, bAppend));
		if (File.IsValid())
		{
			File->Truncate(Size);
		}
	}
} // namespace CorvaneReadAndWrite

TArray<uint8> UFileFunctionsCorv::readBytesFromFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, int64 InSeekBytes, bool& OutSuccess)
{
	OutSuccess = false;
	const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*getCleanDirectory(InDirectoryType, InFilePath)));
	if (!Reader.IsValid())
	{
		return {};
	}
	const int64 Start = FMath::Clamp<int64>(InSeekBytes, 0, Reader->TotalSize());
	const int64 Number = Reader->TotalSize() - Start;
	if (Number > MAX_int32)
	{
		return {};
	}
	TArray<uint8> Bytes;
	Bytes.SetNumUninitialized(static_cast<int32>(Number));
	Reader->Seek(Start);
	Reader->Serialize(Bytes.GetData(), Number);
	OutSuccess = Reader->Close();
	return OutSuccess ? MoveTemp(Bytes) : TArray<uint8>();
}

void UFileFunctionsCorv::readStringFromFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, bool& OutSuccess, FString& OutData)
{
	OutData = FString();
	OutSuccess = FFileHelper::LoadFileToString(OutData, *getCleanDirectory(InDirectoryType, InFilePath));
}

void UFileFunctionsCorv::writeBytesToFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, const TArray<uint8>& InBytes, bool& OutSuccess)
{
	OutSuccess = FFileHelper::SaveArrayToFile(InBytes, *getCleanDirectory(InDirectoryType, InFilePath));
}

void UFileFunctionsCorv::writeStringToFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, const FString& InData, FString InFilePath, bool& OutSuccess)
{
	OutSuccess = FFileHelper::SaveStringToFile(InData, *getCleanDirectory(InDirectoryType, InFilePath));
}

void UFileFunctionsCorv::addBytesToFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, const TArray<uint8>& InBytes, bool& OutSuccess)
{
	OutSuccess = false;
	const FString Path = getCleanDirectory(InDirectoryType, InFilePath);
	const bool bWasThere = FPaths::FileExists(Path);
	TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path, FILEWRITE_Append));
	if (!Writer.IsValid())
	{
		return;
	}
	const int64 SizeBefore = Writer->TotalSize();
	Writer->Seek(SizeBefore);
	Writer->Serialize(const_cast<uint8*>(InBytes.GetData()), InBytes.Num()); // a writer only reads
	OutSuccess = Writer->Close();
	Writer.Reset(); // some systems delete no open file
	if (!OutSuccess)
	{
		CorvaneReadAndWrite::undo(Path, bWasThere, SizeBefore);
	}
}
