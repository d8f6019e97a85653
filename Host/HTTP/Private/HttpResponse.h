#pragma once

#include "Interfaces/IHttpResponse.h"
#include "ResponseBody.h"
#include "ResponseHeaders.h"

/** An answer whose header block is complete and whose body may still grow. Thread: any, but for GetBody. */
class FHttpResponse final : public IHttpResponse
{
public:
	explicit FHttpResponse(FResponseHeaders InHeaders);

	FString GetHeader(const FString& HeaderName) const override;
	TArray<FString> GetAllHeaders() const override;
	uint64 GetContentLength() const override { return Headers.ContentLength(); }
	const TArray<uint8>& GetContent() const override { return Body.Snapshot(); }
	int32 GetResponseCode() const override { return Headers.StatusCode(); }
	FString GetContentAsString() const override;

	/** Thread: HTTP thread. */
	FResponseBody& GetBody() { return Body; }

private:
	const FResponseHeaders Headers;
	FResponseBody Body;
};
