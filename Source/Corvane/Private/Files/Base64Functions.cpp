#include "FileFunctionsCorv.h"

#include "Containers/StringConv.h"
#include "HAL/FileManager.h"
#include "Misc/Base64.h"
#include "Misc/Paths.h"
#include "Serialization/Archive.h"
#include "Templates/UniquePtr.h"

namespace CorvaneBase64
{
	/** As many bytes as a text can show: four units for every three of them. */
	constexpr int64 mostBytes = static_cast<int64>(MAX_int32 / 4) * 3;
	/** A unit of a text becomes three bytes of UTF-8 at most. */
	constexpr int64 mostUnits = mostBytes / 3;

	/** Piece by piece: the bytes of the file are never all in memory beside their text. @return whether it could be read. */
	static bool encodeFile(const FString& Path, FString& Base64)
	{
		constexpr int64 pieceBytes = 3 * (64 << 10); // no padding before the end
		const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path));
		if (!Reader.IsValid() || Reader->TotalSize() > mostBytes)
		{
			return false;
		}
		Base64.Reserve(static_cast<int32>((Reader->TotalSize() + 2) / 3 * 4));
		TArray<uint8> Piece;
		for (int64 Left = Reader->TotalSize(); Left > 0 && !Reader->IsError(); Left -= Piece.Num())
		{
			Piece.SetNumUninitialized(static_cast<int32>(FMath::Min(Left, pieceBytes)));
			Reader->Serialize(Piece.GetData(), Piece.Num());
			Base64 += FBase64::Encode(Piece);
		}
		return Reader->Close();
	}

	static bool encode(const TArray<uint8>& Bytes, FString& Base64)
	{
		Base64 = Bytes.Num() <= mostBytes ? FBase64::Encode(Bytes) : FString();
		return Bytes.Num() <= mostBytes;
	}

	/** @return whether the text was sound; the bytes are empty if it was not. */
	static bool decode(const FString& Base64, TArray<uint8>& Bytes)
	{
		const bool bIsSound = FBase64::Decode(Base64, Bytes);
		if (!bIsSound)
		{
			Bytes.Empty();
		}
		return bIsSound;
	}
} // namespace CorvaneBase64

void UFileFunctionsCorv::fileToBase64String(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, bool& OutSuccess, FString& OutBase64String, FString& OutFileName)
{
	OutBase64String = FString();
	const FString Path = getCleanDirectory(InDirectoryType, InFilePath);
	FString Base64;
	OutSuccess = CorvaneBase64::encodeFile(Path, Base64);
	if (OutSuccess)
	{
		OutBase64String = MoveTemp(Base64);
		OutFileName = FPaths::GetCleanFilename(Path);
	}
}

void UFileFunctionsCorv::bytesToBase64String(const TArray<uint8>& InBytes, FString& OutBase64String)
{
	CorvaneBase64::encode(InBytes, OutBase64String);
}

TArray<uint8> UFileFunctionsCorv::base64StringToBytes(EFileFunctionsCorvDirectoryType, const FString& InBase64String, bool& OutSuccess)
{
	TArray<uint8> Bytes;
	OutSuccess = CorvaneBase64::decode(InBase64String, Bytes);
	return Bytes;
}

void UFileFunctionsCorv::stringToBase64String(const FString& InString, FString& OutBase64String)
{
	if (InString.Len() > CorvaneBase64::mostUnits)
	{
		OutBase64String = FString();
		return;
	}
	const FTCHARToUTF8 Utf8(*InString, InString.Len());
	OutBase64String = FBase64::Encode(reinterpret_cast<const uint8*>(Utf8.Get()), static_cast<uint32>(Utf8.Length()));
}

void UFileFunctionsCorv::base64StringToString(FString& OutString, const FString& InBase64String)
{
	TArray<uint8> Bytes;
	CorvaneBase64::decode(InBase64String, Bytes);
	OutString = FString::ConstructFromPtrSize(reinterpret_cast<const UTF8CHAR*>(Bytes.GetData()), Bytes.Num());
}
