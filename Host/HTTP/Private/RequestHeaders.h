#pragma once

#include "Containers/UnrealString.h"
#include "HeaderList.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** The headers that a program gave a request, in the order in which it first named them. Names ignore case. */
class FRequestHeaders
{
public:
	/** Replaces the value in place when the header is there. */
	void Set(const FString& Name, const FString& Value);
	/** @return empty when absent. */
	FString Get(const FString& Name) const;
	/** @return each header as "Name: value". */
	TArray<FString> GetAll() const;

	/** @return what goes on the wire, or nothing (and an error line in the log) when a header must not be sent. */
	std::optional<FHeaderList> ToWire() const;

	/**
	 * Takes a Content-Length that runs on behind an empty line apart: its number stays, as the last of all headers.
	 * @return what stood behind the empty line; nothing, and no change, when the Content-Length is none of that kind.
	 */
	std::optional<std::string> SplitContentLength();

private:
	std::vector<std::pair<FString, FString>> Headers;
};

namespace RequestHeaders
{
	/** Whether Text is an RFC 9110 token, as method and header names have to be. */
	bool IsToken(std::string_view Text);
} // namespace RequestHeaders
