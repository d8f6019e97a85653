#include "RequestBody.h"

#include "Text.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace
{
	class FBytesBody final : public FRequestBody
	{
	public:
		explicit FBytesBody(TArray<uint8> InBytes)
			: FRequestBody(static_cast<uint64>(InBytes.Num()))
			, Bytes(std::move(InBytes))
		{
		}

		std::optional<size_t> Read(char* Buffer, size_t Room) override
		{
			const size_t Number = std::min(Room, static_cast<size_t>(Size) - Position);
			std::copy_n(Bytes.GetData() + Position, Number, Buffer);
			Position += Number;
			return Number;
		}
		long GetPortion() const override
		{
			constexpr uint64 largeBody = 1 << 20;
			return Size < largeBody ? FRequestBody::GetPortion() : 256 << 10; // fewer rounds; it is memory of each transfer, too
		}
		bool Rewind() override
		{
			Position = 0;
			return true;
		}

	private:
		const TArray<uint8> Bytes;
		size_t Position = 0;
	};

	class FFileBody final : public FRequestBody
	{
	public:
		FFileBody(std::ifstream InStream, uint64 InSize)
			: FRequestBody(InSize)
			, Stream(std::move(InStream))
		{
		}

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
		bool Rewind() override
		{
			Position = 0;
			Stream.clear();
			return static_cast<bool>(Stream.seekg(0));
		}

	private:
		std::ifstream Stream;
		uint64 Position = 0;
	};

	class FJoinedBody final : public FRequestBody
	{
	public:
		FJoinedBody(std::string InHead, std::shared_ptr<FRequestBody> InRest)
			: FRequestBody(InHead.size() + InRest->GetSize())
			, Head(std::move(InHead))
			, Rest(std::move(InRest))
		{
		}

		std::optional<size_t> Read(char* Buffer, size_t Room) override
		{
			if (Position == Head.size())
			{
				return Rest->Read(Buffer, Room);
			}
			const size_t Number = Head.copy(Buffer, Room, Position);
			Position += Number;
			return Number;
		}
		bool Rewind() override
		{
			Position = 0;
			return Rest->Rewind();
		}

	private:
		const std::string Head;
		const std::shared_ptr<FRequestBody> Rest;
		size_t Position = 0; // in Head
	};
} // namespace

std::shared_ptr<FRequestBody> FRequestBody::FromBytes(TArray<uint8> Bytes)
{
	return std::make_shared<FBytesBody>(std::move(Bytes));
}

std::shared_ptr<FRequestBody> FRequestBody::FromFile(const FString& Path)
{
	const std::filesystem::path Name = Text::ToUtf8(Path);
	std::error_code Error;
	if (!std::filesystem::is_regular_file(Name, Error))
	{
		return nullptr; // a directory can be opened, too
	}
	std::ifstream Stream(Name, std::ios::binary);
	const uint64 Size = std::filesystem::file_size(Name, Error);
	return Stream && !Error ? std::make_shared<FFileBody>(std::move(Stream), Size) : nullptr;
}

std::shared_ptr<FRequestBody> FRequestBody::Joined(std::string Head, std::shared_ptr<FRequestBody> Rest)
{
	return std::make_shared<FJoinedBody>(std::move(Head), std::move(Rest));
}
