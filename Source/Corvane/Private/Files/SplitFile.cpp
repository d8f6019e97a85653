#include "FileFunctionsCorv.h"

#include "HAL/FileManager.h"
#include "Misc/Paths.h"
#include "Serialization/Archive.h"

namespace CorvaneSplitFile
{
	constexpr int64 pieceSize = 128 * 1024;

	/** Lies as pages of memory do: the system copies it faster then. */
	struct alignas(4096) FPiece
	{
		uint8 Bytes[pieceSize];
	};

	/** The whole path takes part, as scripts know it: a directory that has the file's name in its own changes as well. */
	static FString partPath(const FString& Source, const FString& Base, int32 Index)
	{
		return Source.Replace(*Base, *FString::Printf(TEXT("%s_%d"), *Base, Index), ESearchCase::IgnoreCase);
	}

	/** Writing would make a missing directory; a part that strays into one is a failure instead. */
	static bool hasDirectory(const FString& Path)
	{
		return FPaths::DirectoryExists(FPaths::GetPath(Path) + TEXT("/")); // the root's own path is empty without the slash
	}

	/** Written through, an existing part might turn out to be a link to the source. */
	static bool makeRoom(const FString& Path)
	{
		constexpr bool bRequireExists = false;
		constexpr bool bEvenReadOnly = false;
		constexpr bool bQuiet = true;
		IFileManager::Get().Delete(*Path, bRequireExists, bEvenReadOnly, bQuiet); // what it says of a file that is not there, nobody tells
		return !FPaths::FileExists(Path);
	}

	/**
	 * Copies the reader's next bytes to a part. Piece by piece: fresh memory for a whole part would cost more time than
	 * the copying.
	 */
	static bool writePart(FArchive& Reader, int64 Size, const FString& Path, FPiece& Piece)
	{
		const TUniquePtr<FArchive> Part(hasDirectory(Path) && makeRoom(Path) ? IFileManager::Get().CreateFileWriter(*Path) : nullptr);
		for (int64 Left = Size; Part.IsValid() && Left > 0; Left -= pieceSize)
		{
			const int64 Number = FMath::Min<int64>(Left, pieceSize);
			Reader.Serialize(Piece.Bytes, Number);
			if (Reader.IsError() || Part->IsError())
			{
				return false;
			}
			Part->Serialize(Piece.Bytes, Number);
		}
		return Part.IsValid() && Part->Close();
	}
} // namespace CorvaneSplitFile

void UFileFunctionsCorv::splitFile(bool& OutSuccess, TArray<FString>& OutAbsolutePathsOfTheParts, TArray<int64>& OutSizeOfTheParts,
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, int32 InParts)
{
	OutSuccess = false;
	const int32 Last = FMath::Max(InParts, 1) - 1;
	const FString Source = getCleanDirectory(InDirectoryType, InFilePath);
	const FString Base = FPaths::GetBaseFilename(Source);
	const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Source));
	if (Base.IsEmpty() || !Reader.IsValid() || Reader->TotalSize() <= Last + 1) // a part without a base would be the source itself
	{
		return;
	}
	const int64 PartSize = Reader->TotalSize() / (Last + 1);
	const int64 LastPartSize = Reader->TotalSize() - Last * PartSize;
	const TUniquePtr<CorvaneSplitFile::FPiece> Piece = MakeUnique<CorvaneSplitFile::FPiece>();
	for (int32 Index = 0; Index <= Last; ++Index)
	{
		const FString Path = CorvaneSplitFile::partPath(Source, Base, Index);
		OutAbsolutePathsOfTheParts.Add(Path);
		if (Index < Last)
		{
			OutSizeOfTheParts.Add(PartSize); // the last part's size is not told
		}
		if (!CorvaneSplitFile::writePart(*Reader, Index < Last ? PartSize : LastPartSize, Path, *Piece))
		{
			return;
		}
	}
	OutSuccess = Reader->Close();
}
