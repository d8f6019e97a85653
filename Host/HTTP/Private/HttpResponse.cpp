#include "HttpResponse.h"

#include "Containers/StringConv.h"
#include "Host/LargePages.h"

#include <algorithm>

namespace
{
	/** A length is only a claim: more than this is not set aside before the bytes come. */
	constexpr uint64 largestReserve = 64u << 20;
} // namespace

bool FHttpResponse::IsReady(const TCHAR* What) const
{
	if (!bReady)
	{
		UE_LOG(LogHttp, Warning, TEXT("%s asked for while the response is still coming in"), What);
	}
	return bReady;
}

FString FHttpResponse::GetHeader(const FString& HeaderName) const
{
	return IsReady(TEXT("Header")) ? Headers.Get(HeaderName) : FString();
}

TArray<FString> FHttpResponse::GetAllHeaders() const
{
	return IsReady(TEXT("Headers")) ? Headers.GetAll() : TArray<FString>();
}

const TArray<uint8>& FHttpResponse::GetContent() const
{
	IsReady(TEXT("Content"));
	return Content;
}

FString FHttpResponse::GetContentAsString() const
{
	const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Content.GetData()), Content.Num());
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}

bool FHttpResponse::Append(const char* Bytes, size_t Number)
{
	if (Content.IsEmpty() && ContentLength > Number)
	{
		Content.Reserve(static_cast<int32>(std::min(ContentLength, largestReserve)));
		preferLargePages(Content.GetData(), static_cast<int64>(std::min(ContentLength, largestReserve)));
	}
	const size_t Fitting = std::min(Number, static_cast<size_t>(MAX_int32 - Content.Num()));
	Content.Append(reinterpret_cast<const uint8*>(Bytes), static_cast<int32>(Fitting));
	return Fitting == Number;
}

void FHttpResponse::Complete(int32 InCode, EHttpFailureReason InReason, const FString& InEffectiveURL)
{
	FailureReason = InReason;
	EffectiveURL = InEffectiveURL;
	Code = InCode;
	bReady = true;
}
