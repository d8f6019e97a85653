#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Serialization/Archive.h"
#include "Templates/SharedPointer.h"

#include <memory>
#include <optional>

/** What a request sends after its headers. Thread: one at a time. */
class FRequestBody
{
public:
	virtual ~FRequestBody() = default;

	virtual uint64 GetSize() const = 0;
	/** Reads the next bytes. @return how many, 0 at the end; nothing when they can no longer be had. */
	virtual std::optional<size_t> Read(char* Buffer, size_t Room) = 0;
	/** Goes back to the first byte. @return false when this body can be read but once. */
	virtual bool Rewind() { return false; }
	/** Whether it is neither in memory nor a file: the one kind that may begin in a header. */
	virtual bool IsStream() const { return false; }
	/** How many bytes are best read at a time. */
	virtual long GetPortion() const { return 64 << 10; }

	/** @param Bytes  outlive the body. */
	static std::unique_ptr<FRequestBody> FromBytes(const TArray<uint8>& Bytes);
	/** @return null when the file cannot be opened. It is read as it is sent, and only as far as it reaches now. */
	static std::unique_ptr<FRequestBody> FromFile(const FString& Path);
	static std::unique_ptr<FRequestBody> FromStream(TSharedRef<FArchive, ESPMode::ThreadSafe> Stream);
};
