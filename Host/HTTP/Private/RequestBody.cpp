#include "RequestBody.h"

#include "Text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace
{
	class FBytesBody final : public FRequestBody
	{
	public:
		explicit FBytesBody(const TArray<uint8>& InBytes)
			: Bytes(InBytes)
		{
		}

		uint64 GetSize() const override { return static_cast<uint64>(Bytes.Num()); }
		std::optional<size_t> Read(char* Buffer, size_t Room) override
		{
			const size_t Number = std::min(Room, static_cast<size_t>(Bytes.Num()) - Position);
			std::copy_n(Bytes.GetData() + Position, Number, Buffer);
			Position += Number;
			return Number;
		}
		bool Rewind() override
		{
			Position = 0;
			return !std::exchange(bRewound, true);
		}
		long GetPortion() const override
		{
			constexpr uint64 largeBody = 1 << 20;
			return GetSize() < largeBody ? FRequestBody::GetPortion() : 256 << 10; // fewer rounds; it is memory of each transfer, too
		}

	private:
		const TArray<uint8>& Bytes;
		size_t Position = 0;
		bool bRewound = false; // once is all there is
	};

	class FFileBody final : public FRequestBody
	{
	public:
		FFileBody(std::ifstream InStream, uint64 InSize)
			: Stream(std::move(InStream))
			, Size(InSize)
		{
		}

		uint64 GetSize() const override { return Size; }
		std::optional<size_t> Read(char* Buffer, size_t Room) override
		{
			const size_t Wanted = static_cast<size_t>(std::min<uint64>(Room, Size - Position));
			if (!Stream.read(Buffer, static_cast<std::streamsize>(Wanted)))
			{
				return std::nullopt; // it has become shorter, and the peer was promised more
			}
			Position += Wanted;
			return Wanted;
		}

	private:
		std::ifstream Stream;
		const uint64 Size;
		uint64 Position = 0;
	};

	class FStreamBody final : public FRequestBody
	{
	public:
		explicit FStreamBody(TSharedRef<FArchive, ESPMode::ThreadSafe> InStream)
			: Stream(std::move(InStream))
		{
		}

		uint64 GetSize() const override { return static_cast<uint64>(std::max<int64>(Stream->TotalSize(), 0)); }
		bool IsStream() const override { return true; }
		std::optional<size_t> Read(char* Buffer, size_t Room) override
		{
			const int64 Left = Stream->TotalSize() - Stream->Tell();
			const int64 Number = std::clamp<int64>(Left, 0, static_cast<int64>(Room));
			Stream->Serialize(Buffer, Number);
			return static_cast<size_t>(Number); // nobody asks the archive whether it had them
		}

	private:
		const TSharedRef<FArchive, ESPMode::ThreadSafe> Stream;
	};
} // namespace

std::unique_ptr<FRequestBody> FRequestBody::FromBytes(const TArray<uint8>& Bytes)
{
	return std::make_unique<FBytesBody>(Bytes);
}

std::unique_ptr<FRequestBody> FRequestBody::FromFile(const FString& Path)
{
	const std::filesystem::path Name = Text::ToUtf8(Path);
	std::error_code Error;
	if (!std::filesystem::is_regular_file(Name, Error))
	{
		return nullptr; // a directory can be opened, too
	}
	std::ifstream Stream(Name, std::ios::binary);
	const uint64 Size = std::filesystem::file_size(Name, Error);
	return Stream && !Error ? std::make_unique<FFileBody>(std::move(Stream), Size) : nullptr;
}

std::unique_ptr<FRequestBody> FRequestBody::FromStream(TSharedRef<FArchive, ESPMode::ThreadSafe> Stream)
{
	return std::make_unique<FStreamBody>(std::move(Stream));
}
