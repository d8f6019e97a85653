#include "FileFunctionsCorv.h"

#include "HAL/FileManager.h"
#include "Misc/SecureHash.h"
#include "Serialization/Archive.h"

namespace CorvaneFileDigest
{
	constexpr int64 chunkSize = 1024;

	/** Feeds the whole file to a digest. @return false when it cannot be read to its end. */
	static bool digest(FArchive& Reader, FMD5& Md5)
	{
		uint8 Chunk[chunkSize];
		const int64 Size = Reader.TotalSize();
		for (int64 Position = 0; Position < Size && !Reader.IsError(); Position += chunkSize)
		{
			const int64 Number = FMath::Min<int64>(chunkSize, Size - Position);
			Reader.Serialize(Chunk, Number);
			Md5.Update(Chunk, static_cast<uint64>(Number));
		}
		return Reader.Close();
	}

	static FString hexadecimal(FMD5& Md5)
	{
		uint8 Digest[16];
		Md5.Final(Digest);
		FString Text;
		for (const uint8 Byte : Digest)
		{
			Text += FString::Printf(TEXT("%02x"), Byte);
		}
		return Text;
	}
} // namespace CorvaneFileDigest

void UFileFunctionsCorv::getMD5FromFile(
	EFileFunctionsCorvDirectoryType InDirectoryType, FString InFilePath, bool& OutSuccess, FString& OutMD5)
{
	const TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*getCleanDirectory(InDirectoryType, InFilePath)));
	FMD5 Md5;
	OutSuccess = Reader.IsValid() && CorvaneFileDigest::digest(*Reader, Md5);
	OutMD5 = OutSuccess ? CorvaneFileDigest::hexadecimal(Md5) : FString();
}
