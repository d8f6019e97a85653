#include "Completion/CompletionResult.h"

FCorvCompletion CorvaneResult::success(const IHttpResponse& Response)
{
	FCorvCompletion Result = successWithoutBody(Response);
	Result.byteData = Response.GetContent();
	Result.dataString = Response.GetContentAsString();
	Result.dataArray = toLines(Result.dataString);
	return Result;
}

FCorvCompletion CorvaneResult::successWithoutBody(const IHttpResponse& Response)
{
	FCorvCompletion Result;
	Result.header = Response.GetAllHeaders();
	Result.statusCode = Response.GetResponseCode();
	return Result;
}

FCorvCompletion CorvaneResult::failure(const FHttpResponsePtr& Response)
{
	constexpr int32 firstErrorCode = 400;
	constexpr int32 noResponseCode = 500;
	// Below 400 the answer of a broken exchange would pass for a success, so it counts as none.
	const bool bServerRefused = Response.IsValid() && Response->GetResponseCode() >= firstErrorCode;
	FCorvCompletion Result;
	Result.dataString = bServerRefused ? Response->GetContentAsString() : FString(TEXT("No Response"));
	Result.dataArray = toLines(Result.dataString);
	Result.statusCode = bServerRefused ? Response->GetResponseCode() : noResponseCode;
	return Result;
}

TArray<FString> CorvaneResult::toLines(const FString& Text)
{
	TArray<FString> Lines;
	Text.ParseIntoArray(Lines, TEXT("\r\n"));
	return Lines;
}
