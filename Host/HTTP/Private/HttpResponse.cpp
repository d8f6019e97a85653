#include "HttpResponse.h"

#include "Containers/StringConv.h"
#include "Text.h"

FHttpResponse::FHttpResponse(FResponseHeaders InHeaders)
	: Headers(std::move(InHeaders))
{
	Body.Expect(Headers.ContentLength());
}

FString FHttpResponse::GetHeader(const FString& HeaderName) const
{
	return Text::FromUtf8(Headers.Find(Text::ToUtf8(HeaderName)));
}

TArray<FString> FHttpResponse::GetAllHeaders() const
{
	TArray<FString> Lines;
	std::string Line;
	Headers.ForEach(
		[&](std::string_view Name, std::string_view Value)
		{
			Line.assign(Name).append(": ").append(Value);
			Lines.Add(Text::FromUtf8(Line));
		});
	return Lines;
}

FString FHttpResponse::GetContentAsString() const
{
	const TArray<uint8>& Bytes = GetContent();
	const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes.GetData()), Bytes.Num());
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}
