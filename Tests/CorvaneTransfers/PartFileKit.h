#pragma once

#include "Files/PartFile.h"
#include "TextSupport.h"

#include <string>

/** A file on a server. */
struct Source
{
	std::string Bytes;
	std::string ETag;
};

inline const char* const sourceAddress = "http://host/file.bin";

inline FCorvaneSourceFacts factsOf(const Source& From)
{
	FCorvaneSourceFacts Facts;
	Facts.Address = sourceAddress;
	Facts.ETag = text(From.ETag);
	Facts.Total = static_cast<int64>(From.Bytes.size());
	return Facts;
}

/** @return whether they were taken. */
inline bool append(FCorvanePartFile& File, std::string_view Bytes)
{
	return File.Append(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int64>(Bytes.size())).IsOk();
}
