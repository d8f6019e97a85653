#include "HttpResponse.h"

#include "Host/LargePages.h"

#include <algorithm>

namespace
{
	/** A length is only a claim: of more than this, no more is set aside than twice what has come. */
	constexpr uint64 largestClaim = 64u << 20;
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
	return FString::ConstructFromPtrSize(reinterpret_cast<const UTF8CHAR*>(Content.GetData()), Content.Num());
}

void FHttpResponse::SetAside(uint64 Needed)
{
	const uint64 Likely = std::min(ContentLength, static_cast<uint64>(MAX_int32));
	if (Needed > BytesSetAside && Needed < Likely)
	{
		BytesSetAside = std::min(Likely, std::max(largestClaim, Needed * 2));
		Content.Reserve(static_cast<int32>(BytesSetAside));
		preferLargePages(Content.GetData(), static_cast<int64>(BytesSetAside));
	}
}

bool FHttpResponse::Append(const char* Bytes, size_t Number)
{
	const size_t Fitting = std::min(Number, static_cast<size_t>(MAX_int32 - Content.Num()));
	SetAside(static_cast<uint64>(Content.Num()) + Fitting);
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
