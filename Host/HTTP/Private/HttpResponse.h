#pragma once

#include "HeaderMap.h"
#include "Interfaces/IHttpResponse.h"

/**
 * An answer on its way, and then as it is. Nothing here is locked: while the request runs, the HTTP thread writes, and
 * from the end on nobody does.
 */
class FHttpResponse final : public IHttpResponse
{
public:
	explicit FHttpResponse(const FString& InURL)
		: EffectiveURL(InURL)
	{
	}
	EHttpFailureReason GetFailureReason() const override { return FailureReason; }
	const FString& GetEffectiveURL() const override { return EffectiveURL; }
	FString GetHeader(const FString& HeaderName) const override;
	TArray<FString> GetAllHeaders() const override;
	uint64 GetContentLength() const override { return ContentLength; }
	const TArray<uint8>& GetContent() const override;
	int32 GetResponseCode() const override { return Code; }
	FString GetContentAsString() const override;

	// HTTP thread:
	void AddHeader(FString Name, FString Value) { Headers.Append(std::move(Name), std::move(Value)); }
	void SetContentLength(uint64 Length) { ContentLength = Length; }
	/** @return false when the body would be longer than an array can be; the bytes that fit are kept. */
	bool Append(const char* Bytes, size_t Number);

	/** Shows code, headers, address and why it failed, if it did. Thread: that of the request's callbacks. */
	void Complete(int32 InCode, EHttpFailureReason InReason, const FString& InEffectiveURL);

private:
	bool IsReady(const TCHAR* What) const;
	void SetAside(uint64 Needed);

	FString EffectiveURL;
	EHttpFailureReason FailureReason = EHttpFailureReason::None;
	FHeaderMap Headers;
	uint64 ContentLength = 0;
	TArray<uint8> Content;
	uint64 BytesSetAside = 0; // of it
	int32 Code = 0;
	bool bReady = false;
};
