#include "RequestHeaders.h"

#include "CoreMinimal.h"
#include "Text.h"

#include <algorithm>

namespace
{
	const TCHAR* const contentLength = TEXT("Content-Length");
	constexpr std::string_view emptyLine = "\r\n\r\n";

	/** A line break or a zero would end the header early and let its value write headers of its own. */
	bool isSafeValue(std::string_view Value)
	{
		return std::none_of(Value.begin(), Value.end(),
			[](char Byte)
			{
				const uint8 Code = static_cast<uint8>(Byte);
				return (Code < 0x20 && Code != '\t') || Code == 0x7F;
			});
	}
} // namespace

bool RequestHeaders::IsToken(std::string_view Text)
{
	constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
	const auto bTokenByte = [marks](char Byte) {
		return (Byte >= '0' && Byte <= '9') || (Byte >= 'A' && Byte <= 'Z') || (Byte >= 'a' && Byte <= 'z') ||
			   marks.find(Byte) != marks.npos;
	};
	return !Text.empty() && std::all_of(Text.begin(), Text.end(), bTokenByte);
}

void FRequestHeaders::Set(const FString& Name, const FString& Value)
{
	for (auto& Header : Headers)
	{
		if (Header.first == Name)
		{
			Header = {Name, Value}; // the new spelling too, as in a map of the engine
			return;
		}
	}
	Headers.emplace_back(Name, Value);
}

FString FRequestHeaders::Get(const FString& Name) const
{
	const auto Found = std::find_if(Headers.begin(), Headers.end(), [&Name](const auto& Header) { return Header.first == Name; });
	return Found == Headers.end() ? FString() : Found->second;
}

TArray<FString> FRequestHeaders::GetAll() const
{
	TArray<FString> Lines;
	for (const auto& [Name, Value] : Headers)
	{
		Lines.Add(Name + TEXT(": ") + Value);
	}
	return Lines;
}

std::optional<std::string> FRequestHeaders::SplitContentLength()
{
	const auto Found = std::find_if(Headers.begin(), Headers.end(), [](const auto& Header) { return Header.first == contentLength; });
	const std::string Value = Found == Headers.end() ? "" : Text::ToUtf8(Found->second);
	const size_t NumberEnd = Value.find_first_not_of("0123456789");
	if (NumberEnd == 0 || NumberEnd == Value.npos || Value.compare(NumberEnd, emptyLine.size(), emptyLine) != 0)
	{
		return std::nullopt;
	}
	Found->second = Found->second.Left(static_cast<int32>(NumberEnd));
	std::rotate(Found, Found + 1, Headers.end());
	return Value.substr(NumberEnd + emptyLine.size());
}

std::optional<FHeaderList> FRequestHeaders::ToWire() const
{
	FHeaderList List;
	List.Remove("Expect"); // bodies go out at once, whatever their size
	if (Get(TEXT("Content-Type")).IsEmpty())
	{
		List.Remove("Content-Type"); // libcurl takes every body for a form
	}
	for (const auto& [Name, Value] : Headers)
	{
		const std::string NameBytes = Text::ToUtf8(Name);
		const std::string ValueBytes = Text::ToUtf8(Value);
		if (!RequestHeaders::IsToken(NameBytes))
		{
			UE_LOG(LogHttp, Error, TEXT("Request refused: a header has a name that cannot be sent"));
			return std::nullopt;
		}
		if (!isSafeValue(ValueBytes))
		{
			UE_LOG(LogHttp, Error, TEXT("Request refused: header %s has control characters in its value"), *Name);
			return std::nullopt;
		}
		List.Add(NameBytes, ValueBytes);
	}
	return List;
}
