#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

/** What a request sends behind its headers. The size is fixed from the start. Thread: one at a time. */
class FRequestBody
{
public:
	virtual ~FRequestBody() = default;

	uint64 GetSize() const { return Size; }
	/** Reads the next bytes. @return how many, 0 at the end; nothing when they can no longer be had. */
	virtual std::optional<size_t> Read(char* Buffer, size_t Room) = 0;
	/** How many bytes are best read at a time. */
	virtual long GetPortion() const { return 64 << 10; }
	/** Goes back to the first byte, for another hop. @return false when that fails. */
	virtual bool Rewind() = 0;

	static std::shared_ptr<FRequestBody> FromBytes(TArray<uint8> Bytes);
	/** @return null when the file cannot be opened. It is read as it is sent, and only as far as it reaches now. */
	static std::shared_ptr<FRequestBody> FromFile(const FString& Path);
	/** Head, and then what Rest holds. */
	static std::shared_ptr<FRequestBody> Joined(std::string Head, std::shared_ptr<FRequestBody> Rest);

protected:
	explicit FRequestBody(uint64 InSize)
		: Size(InSize)
	{
	}

	const uint64 Size;
};
