#include "Files/FileBlocks.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

namespace CorvaneFileBlocks
{
	static constexpr int64 TailSize = 64 << 10;
	static constexpr int64 BlockSize = 1 << 20;

	static TUniquePtr<IFileHandle> Open(const FString& File)
	{
		constexpr bool bWhileItIsWritten = true;
		return TUniquePtr<IFileHandle>(FPlatformFileManager::Get().GetPlatformFile().OpenRead(*File, bWhileItIsWritten));
	}
} // namespace CorvaneFileBlocks

bool CorvaneFileBlocks::Read(const FString& File, int64 Start, int64 Count, TArray<uint8>& Bytes)
{
	const TUniquePtr<IFileHandle> Handle = Open(File);
	Bytes.SetNumUninitialized(static_cast<int32>(Count));
	return Handle.IsValid() && Handle->Size() >= Start + Count && Handle->Seek(Start) && Handle->Read(Bytes.GetData(), Count);
}

bool CorvaneFileBlocks::DescribeStart(const FString& File, int64 Length, FCorvaneFileStart& Start)
{
	const int64 Count = FMath::Min<int64>(TailSize, Length);
	TArray<uint8> Tail;
	if (!Read(File, Length - Count, Count, Tail))
	{
		return false;
	}
	Start.Length = Length;
	Start.TailHash = CorvaneSha256Of(Tail.GetData(), Count);
	return true;
}

bool CorvaneFileBlocks::HasStart(const FString& File, const FCorvaneFileStart& Start)
{
	FCorvaneFileStart Found;
	return DescribeStart(File, Start.Length, Found) && Found.TailHash.Equals(Start.TailHash, ESearchCase::CaseSensitive);
}

bool CorvaneFileBlocks::IsFile(const FString& File, const FCorvaneFileStart& Whole)
{
	return FPlatformFileManager::Get().GetPlatformFile().FileSize(*File) == Whole.Length && HasStart(File, Whole);
}

bool CorvaneFileBlocks::HashAll(const FString& File, ECorvaneHashKind Kind, const std::atomic<bool>& bStop, FString& Hash)
{
	const TUniquePtr<IFileHandle> Handle = Open(File);
	if (!Handle.IsValid())
	{
		return false;
	}
	FCorvaneFileHash Hasher(Kind);
	TArray<uint8> Block;
	Block.SetNumUninitialized(BlockSize);
	for (int64 Left = Handle->Size(); Left > 0; Left -= BlockSize)
	{
		const int64 Count = FMath::Min<int64>(Left, BlockSize);
		if (bStop || !Handle->Read(Block.GetData(), Count))
		{
			return false;
		}
		Hasher.Update(Block.GetData(), Count);
	}
	Hash = Hasher.Final();
	return true;
}
