#include "Misc/FileHelper.h"

#include "Containers/StringConv.h"
#include "HAL/FileManager.h"
#include "Serialization/Archive.h"

#include <algorithm>
#include <memory>

namespace
{
	constexpr uint8 utf16LowFirst[] = {0xFF, 0xFE};
	constexpr uint8 utf16HighFirst[] = {0xFE, 0xFF};
	constexpr uint8 utf8Mark[] = {0xEF, 0xBB, 0xBF};

	template <size_t Size>
	bool startsWith(const TArray<uint8>& Bytes, const uint8 (&Mark)[Size])
	{
		return Bytes.Num() >= static_cast<int32>(Size) && std::equal(Mark, Mark + Size, Bytes.GetData());
	}

	/** @param Low  where in a unit its low byte stands: 0 or 1. */
	FString utf16AfterMark(const TArray<uint8>& Bytes, int32 Low)
	{
		FString Text;
		Text.Reserve(Bytes.Num() / 2);
		for (int32 At = 2; At + 1 < Bytes.Num(); At += 2)
		{
			Text.AppendChar(static_cast<TCHAR>(Bytes[At + Low] | Bytes[At + 1 - Low] << 8));
		}
		return Text;
	}

	FString utf8From(const TArray<uint8>& Bytes, int32 Start)
	{
		const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes.GetData()) + Start, Bytes.Num() - Start);
		return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
	}

	bool save(const uint8* Bytes, int64 Number, const TCHAR* Filename)
	{
		const std::unique_ptr<FArchive> Writer(IFileManager::Get().CreateFileWriter(Filename));
		if (!Writer)
		{
			return false;
		}
		Writer->Serialize(const_cast<uint8*>(Bytes), Number); // a writer only reads
		return Writer->Close();
	}
} // namespace

bool FFileHelper::LoadFileToArray(TArray<uint8>& Result, const TCHAR* Filename, uint32 Flags)
{
	const std::unique_ptr<FArchive> Reader(IFileManager::Get().CreateFileReader(Filename, Flags));
	if (!Reader || Reader->TotalSize() > MAX_int32)
	{
		return false;
	}
	TArray<uint8> Bytes;
	Bytes.SetNumUninitialized(static_cast<int32>(Reader->TotalSize()));
	Reader->Serialize(Bytes.GetData(), Bytes.Num());
	if (!Reader->Close())
	{
		return false;
	}
	Result = std::move(Bytes);
	return true;
}

bool FFileHelper::LoadFileToString(FString& Result, const TCHAR* Filename)
{
	TArray<uint8> Bytes;
	if (!LoadFileToArray(Bytes, Filename))
	{
		return false;
	}
	if (startsWith(Bytes, utf16LowFirst))
	{
		Result = utf16AfterMark(Bytes, 0);
	}
	else if (startsWith(Bytes, utf16HighFirst))
	{
		Result = utf16AfterMark(Bytes, 1);
	}
	else
	{
		Result = utf8From(Bytes, startsWith(Bytes, utf8Mark) ? static_cast<int32>(std::size(utf8Mark)) : 0);
	}
	return true;
}

bool FFileHelper::SaveArrayToFile(TArrayView<const uint8> Array, const TCHAR* Filename)
{
	return save(Array.GetData(), Array.Num(), Filename);
}

bool FFileHelper::SaveStringToFile(FStringView String, const TCHAR* Filename)
{
	const bool bAscii = std::all_of(String.begin(), String.end(), [](TCHAR Unit) { return Unit < 0x80; });
	std::string Bytes;
	Bytes.reserve(bAscii ? String.size() : 2 * (String.size() + 1));
	if (!bAscii)
	{
		Bytes.append(std::begin(utf16LowFirst), std::end(utf16LowFirst));
	}
	for (const TCHAR Unit : String)
	{
		Bytes.push_back(static_cast<char>(Unit & 0xFF));
		if (!bAscii)
		{
			Bytes.push_back(static_cast<char>(Unit >> 8));
		}
	}
	return save(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int64>(Bytes.size()), Filename);
}
